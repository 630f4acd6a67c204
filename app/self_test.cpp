#include "app/self_test.h"

#include <exception>
#include <iostream>

#include "engine/sorting_suite.h"
#include "schedule/scheduling_suite.h"
#include "values/require.h"

void runSelfTest() {
  try {
    runSortingSuite();
    runSchedulingSuite();
  } catch (const std::exception&) {
    require(false);  // an error of the platform is a failed check
  }
  std::cout << "PASS: daily, weekdays, weekends, selected days, empty selection and daylight-saving gap\n"
            << "PASS: recursive sort, folders first, natural names, Reading List preserved, idempotence\n"
            << std::flush;
}
