// The types of GCC's objc/objc.h. That header and its runtime.h do not compile with ARC: they look into objects.
#pragma once

#include <stddef.h>

#define __GNU_LIBOBJC__ 20110608

typedef unsigned char BOOL;
typedef const struct objc_selector* SEL;
typedef struct objc_class* Class;
typedef struct objc_object {
  Class class_pointer;
} * id;
typedef id (*IMP)(id, SEL, ...);

#define YES __objc_yes
#define NO __objc_no
#ifdef __cplusplus
#define nil nullptr
#define Nil nullptr
#else
#define nil (id)0
#define Nil (Class)0
#endif

@class Protocol;
