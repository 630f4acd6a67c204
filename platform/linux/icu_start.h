// Starting ICU when memory is short.
#pragma once

// While this object lives, the program ends with a message and EXIT_FAILURE if ICU cannot allocate memory. When it
// loads its first data, ICU does not check that: it then dereferences null pointers, or waits for itself for ever.
// Later it reports the failure.
class IcuStart {
 public:
  IcuStart();
  ~IcuStart();
  IcuStart(const IcuStart&) = delete;
  IcuStart& operator=(const IcuStart&) = delete;
};
