// What GNUstep's headers, the rig and the tests use of GCC's objc/runtime.h.
#pragma once

#include <objc/objc.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct objc_method* Method;
typedef struct objc_ivar* Ivar;

Class objc_getClass(const char* name);
SEL sel_registerName(const char* name);
const char* sel_getName(SEL selector);
Class class_getSuperclass(Class aClass);
size_t class_getInstanceSize(Class aClass);

static inline Class object_getClass(id object) { return object != nil ? *(Class*)(__bridge void*)object : Nil; }

#ifdef __cplusplus
}
#endif
