// Replaces methods of GNUstep by the rig's.
#pragma once

#include <objc/runtime.h>

extern "C" {
Method class_getInstanceMethod(Class aClass, SEL selector);
IMP method_getImplementation(Method method);
IMP method_setImplementation(Method method, IMP implementation);
}

// Replaces an instance method. Returns the former one, which the new one may call.
template <class Function>
Function replaceMethod(const char* className, const char* selector, Function replacement) {
  Method const method = class_getInstanceMethod(objc_getClass(className), sel_registerName(selector));
  return reinterpret_cast<Function>(method_setImplementation(method, (IMP)replacement));
}
