# Joins sources of tests, as CMAKE_UNITY_BUILD does with others: CMake cannot, because many of them have helpers of the same
# name. Without CMAKE_UNITY_BUILD it leaves them as they are.

set(tests_in_a_source 10)

# Replaces the sources of tests in the list of the given name by a few sources that join them.
function(join_tests sources)
  if(NOT CMAKE_UNITY_BUILD)
    return()
  endif()
  set(tests ${${sources}})
  foreach(source ${tests})
    file(STRINGS ${source} found LIMIT_COUNT 1 REGEX "^TEST(_F|_P)?\\(")
    if(NOT found OR source MATCHES "\\.mm$")
      list(REMOVE_ITEM tests ${source})
    endif()
  endforeach()
  list(REMOVE_ITEM ${sources} ${tests})
  set(script ${PROJECT_SOURCE_DIR}/tools/joined_sources.py)
  while(tests)
    list(SUBLIST tests 0 ${tests_in_a_source} batch)
    list(REMOVE_ITEM tests ${batch})
    list(LENGTH tests left)
    set(output ${CMAKE_CURRENT_BINARY_DIR}/${sources}_${left}.cpp)
    add_custom_command(OUTPUT ${output} COMMAND ${Python3_EXECUTABLE} ${script} ${output} ${batch}
                       DEPENDS ${batch} ${script} VERBATIM)
    set_source_files_properties(${output} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
    list(APPEND ${sources} ${output})
  endwhile()
  set(${sources} ${${sources}} PARENT_SCOPE)
endfunction()
