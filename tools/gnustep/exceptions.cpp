// Exceptions of Objective-C in code that clang compiled: GNUstep throws them in the way of GCC's libobjc, which C++
// code cannot catch by class. On a Mac they are exceptions of C++. Here each becomes one in the first function with a
// handler for it.
#include <unwind.h>

#include <cxxabi.h>

#include <cstdint>
#include <exception>
#include <typeinfo>

#include "tools/gnustep/libobjc.h"

extern "C" {
// Of libstdc++.
_Unwind_Reason_Code __gxx_personality_v0(int version, _Unwind_Action actions, std::uint64_t exceptionClass,
                                         _Unwind_Exception* exception, _Unwind_Context* context);
}

namespace {

struct ThrownObject {
  Object object;
};

// What GCC's libobjc throws.
struct LibobjcException {
  _Unwind_Exception header;
  Object object;
};

// The beginning of libstdc++'s globals of a thread.
struct CxxGlobals {
  void* caught;
  unsigned uncaught;
};

constexpr std::uint64_t classOf(const char (&name)[9]) {
  std::uint64_t result = 0;
  for (int index = 0; index < 8; ++index) result = result << 8U | static_cast<unsigned char>(name[index]);
  return result;
}

constexpr std::uint64_t libobjcClass = classOf("GNUCOBJC");
constexpr std::uint64_t cxxClass = 0x474e5543432b2b00;  // "GNUCC++" and a null

_Unwind_Exception* headerOf(void* thrown) { return static_cast<_Unwind_Exception*>(thrown) - 1; }

// The exception of C++ that stands for one of Objective-C while handlers are looked for.
struct Conversion {
  _Unwind_Exception* from = nullptr;
  void* thrown = nullptr;
};

Conversion& conversion() {
  static thread_local Conversion current;
  return current;
}

void releaseObject(void* thrown) { objc_release(static_cast<ThrownObject*>(thrown)->object); }

void* converted(_Unwind_Exception* exception) {
  Conversion& current = conversion();
  if (current.from == exception) return current.thrown;
  current.from = exception;
  current.thrown = __cxxabiv1::__cxa_allocate_exception(sizeof(ThrownObject));
  static_cast<ThrownObject*>(current.thrown)->object =
      objc_retain(reinterpret_cast<LibobjcException*>(exception)->object);
  auto* const type = const_cast<std::type_info*>(&typeid(ThrownObject));
  // Its first member counts the references.
  *reinterpret_cast<int*>(__cxxabiv1::__cxa_init_primary_exception(current.thrown, type, releaseObject)) = 1;
  return current.thrown;
}

bool isKindOf(Object object, const char* name) {
  void* const wanted = objc_getClass(name);
  for (void* found = object->isa; found != nullptr; found = class_getSuperclass(found))
    if (found == wanted) return true;
  return false;
}

}  // namespace

namespace gnustep::libobjc {

// The type of what an @catch names. Clang makes objects of it, so it must have this name.
class __objc_class_type_info : public std::type_info {
 public:
  using std::type_info::type_info;
  ~__objc_class_type_info() override;
  bool __do_catch(const std::type_info* thrownType, void** thrown, unsigned outer) const override;
};

__objc_class_type_info::~__objc_class_type_info() = default;

bool __objc_class_type_info::__do_catch(const std::type_info* thrownType, void** thrown, unsigned) const {
  if (*thrownType != typeid(ThrownObject)) return false;
  const Object object = static_cast<ThrownObject*>(*thrown)->object;
  if (!isKindOf(object, name())) return false;
  *thrown = object;
  return true;
}

}  // namespace gnustep::libobjc

// Functions on the way of an exception of Objective-C clean up as they do for any foreign exception; the one with the
// handler gets the converted one.
extern "C" _Unwind_Reason_Code __gnustep_objcxx_personality_v0(int version, _Unwind_Action actions,
                                                               std::uint64_t exceptionClass,
                                                               _Unwind_Exception* exception, _Unwind_Context* context) {
  if (exceptionClass != libobjcClass) return __gxx_personality_v0(version, actions, exceptionClass, exception, context);
  const bool searches = (actions & _UA_SEARCH_PHASE) != 0;
  if (!searches && (actions & _UA_HANDLER_FRAME) == 0)
    return __gxx_personality_v0(version, actions, exceptionClass, exception, context);
  void* const thrown = converted(exception);
  const auto result = __gxx_personality_v0(version, actions, cxxClass, headerOf(thrown), context);
  if (result == _URC_INSTALL_CONTEXT) {
    ++reinterpret_cast<CxxGlobals*>(__cxxabiv1::__cxa_get_globals())->uncaught;
    conversion() = {};
    _Unwind_DeleteException(exception);
  }
  return result;
}
