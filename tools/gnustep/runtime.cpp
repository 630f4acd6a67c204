// Lets what clang compiles for libobjc2 run on GCC's libobjc, the only Objective-C runtime of Debian. The two differ in
// the layout of modules and classes, in the functions that code calls, and in the way of exceptions (exceptions.cpp).
#include <cstddef>

#include "tools/gnustep/libobjc.h"

namespace {

// What the compiler leaves for the runtime, as in GCC's module-abi-8.h. Clang's structures begin in the same way.

struct Ivar {
  const char* name;
  const char* type;
  int offset;
};

struct IvarList {
  int count;
  Ivar first[1];
};

struct Protocol {
  std::size_t version;  // later the class Protocol
};

struct ProtocolList {
  ProtocolList* next;
  std::size_t count;
  Protocol* first[1];
};

struct RuntimeClass {
  RuntimeClass* metaclass;
  const char* superclass;  // its name until the runtime has resolved it
  const char* name;
  long version;
  unsigned long flags;
  long instanceSize;
  IvarList* ivars;
  void* methods;
  void* dispatchTable;
  void* subclasses;
  void* sibling;
  ProtocolList* protocols;
  void* collectorType;
  // Only clang's have these:
  long abi;
  int** ivarOffsets;
};

struct Category {
  const char* name;
  const char* className;
  void* instanceMethods;
  void* classMethods;
  ProtocolList* protocols;
};

struct SymbolTable {
  unsigned long selectorCount;
  void* selectors;
  unsigned short classCount;
  unsigned short categoryCount;
  void* definitions[1];  // classes, categories, constant objects
};

struct Module {
  unsigned long version;
  unsigned long size;
  const char* name;
  SymbolTable* symbols;
};

constexpr unsigned long moduleVersion = 8;
constexpr std::size_t protocolVersion = 2;
constexpr unsigned long classKind = 3;  // the flags for classes and metaclasses; GCC's others come at run time

void translate(ProtocolList* protocols) {
  for (; protocols != nullptr; protocols = protocols->next)
    for (std::size_t index = 0; index < protocols->count; ++index) protocols->first[index]->version = protocolVersion;
}

// Clang counts a class's size and offsets from the end of its superclass, which only the runtime knows.
void translate(RuntimeClass& added) {
  added.flags &= classKind;
  added.metaclass->flags &= classKind;
  translate(added.protocols);
  if (added.instanceSize > 0) return;
  const auto start = static_cast<int>(class_getInstanceSize(objc_getClass(added.superclass)));
  added.instanceSize = start - added.instanceSize;
  if (added.ivars == nullptr) return;
  for (int index = 0; index < added.ivars->count; ++index) {
    added.ivars->first[index].offset += start;
    *added.ivarOffsets[index] = added.ivars->first[index].offset;
  }
}

void translate(SymbolTable& symbols) {
  void** const classes = symbols.definitions;
  void** const categories = classes + symbols.classCount;
  for (int index = 0; index < symbols.classCount; ++index) translate(*static_cast<RuntimeClass*>(classes[index]));
  for (int index = 0; index < symbols.categoryCount; ++index)
    translate(static_cast<Category*>(categories[index])->protocols);
}

// What libobjc2 returns for a message: code takes the method out of it and calls that at once.
struct Slot {
  void* unused[3];
  int version;
  void* method;
};

Slot* slotOf(void* method) {
  static thread_local Slot slot{};
  slot.method = method;
  return &slot;
}

template <class Result, class... Arguments>
Result send(Object receiver, const char* name, Arguments... arguments) {
  const Selector selector = sel_registerName(name);
  const auto method = reinterpret_cast<Result (*)(Object, Selector, Arguments...)>(objc_msg_lookup(receiver, selector));
  return method(receiver, selector, arguments...);
}

}  // namespace

extern "C" {

void __real___objc_exec_class(void* module);
extern void* _NSConcreteStackBlock;  // blocks.mm

// Each object file calls this for itself before main.
void __wrap___objc_exec_class(Module* module) {
  translate(*module->symbols);
  // The runtime keeps it.
  __real___objc_exec_class(new Module{moduleVersion, sizeof(Module), module->name, module->symbols});
}

// Reads the receiver's class here, where AddressSanitizer sees it.
Slot* objc_msg_lookup_sender(Object* receiver, Selector selector, Object) {
  if (*receiver != nullptr && (*receiver)->isa == nullptr) __builtin_trap();
  return slotOf(objc_msg_lookup(*receiver, selector));
}

Slot* objc_slot_lookup_super(Super* super, Selector selector) { return slotOf(objc_msg_lookup_super(super, selector)); }

// Automatic reference counting, by the methods of NSObject.

// A block on the stack lives as long as its scope. Its method `retain` copies it, for GNUstep.
Object objc_retain(Object object) {
  const bool isOnTheStack = object != nullptr && object->isa == &_NSConcreteStackBlock;
  return isOnTheStack ? object : send<Object>(object, "retain");
}

void objc_release(Object object) { send<void>(object, "release"); }

Object objc_autorelease(Object object) { return send<Object>(object, "autorelease"); }

void objc_storeStrong(Object* place, Object object) {
  objc_retain(object);
  const Object former = *place;
  *place = object;
  objc_release(former);
}

Object objc_autoreleaseReturnValue(Object object) { return objc_autorelease(object); }

Object objc_retainAutorelease(Object object) { return objc_autorelease(objc_retain(object)); }

Object objc_retainAutoreleaseReturnValue(Object object) { return objc_retainAutorelease(object); }

Object objc_retainAutoreleasedReturnValue(Object object) { return objc_retain(object); }

Object objc_unsafeClaimAutoreleasedReturnValue(Object object) { return object; }

Object objc_retainBlock(Object block) { return send<Object>(block, "copy"); }

Object objc_autoreleasePoolPush() {
  return send<Object>(send<Object>(objc_getClass("NSAutoreleasePool"), "alloc"), "init");
}

void objc_autoreleasePoolPop(Object pool) { objc_release(pool); }
}
