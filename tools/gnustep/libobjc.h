// The part of GCC's libobjc that the rig calls, for sources without Objective-C.
#pragma once

#include <cstddef>

struct ObjectHeader {
  void* isa;
};
using Object = ObjectHeader*;
using Selector = const void*;

struct Super {
  Object self;
  void* superclass;
};

extern "C" {
Object objc_getClass(const char* name);
void* class_getSuperclass(void* aClass);
std::size_t class_getInstanceSize(void* aClass);
Selector sel_registerName(const char* name);
void* objc_msg_lookup(Object receiver, Selector selector);
void* objc_msg_lookup_super(Super* super, Selector selector);

Object objc_retain(Object object);
void objc_release(Object object);
}
