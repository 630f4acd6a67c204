// Blocks as clang makes them for libobjc2. GNUstep retains blocks as objects and copies only some of them, so retaining
// a block on the stack copies it here.
#import <Foundation/Foundation.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include <objc/blocks_runtime.h>

namespace {

enum Flags : int { references = 0xffff, needsFree = 1 << 24, hasCopyAndDispose = 1 << 25, isGlobal = 1 << 28 };

struct Descriptor {
  unsigned long reserved;
  unsigned long size;
  void (*copy)(void* to, const void* from);
  void (*dispose)(const void* block);
};

struct Block {
  void* isa;
  int flags;
  int reserved;
  void* invoke;
  const Descriptor* descriptor;
};

// Thread-safe, because threads share blocks.
int addTo(Block* block, int change) { return std::atomic_ref(block->flags).fetch_add(change) + change; }

}  // namespace

@interface RigBlock : NSObject
@end
@interface RigStackBlock : RigBlock
@end
@interface RigMallocBlock : RigBlock
@end
@interface RigGlobalBlock : RigBlock
@end

// NSObject's methods would count references in memory before the block.
@implementation RigBlock
- (id)copyWithZone:(NSZone*)__unused zone {
  return (id)_Block_copy(self);
}
- (id)copy {
  return (id)_Block_copy(self);
}
- (id)retain {
  return (id)_Block_copy(self);
}
- (oneway void)release {
  _Block_release(self);
}
- (id)autorelease {
  id const kept = [self retain];
  [NSAutoreleasePool addObject:kept];
  return kept;
}
- (NSUInteger)retainCount {
  return 1;
}
@end

@implementation RigStackBlock
@end
@implementation RigMallocBlock
@end
@implementation RigGlobalBlock
@end

// The names that clang gives to the classes of blocks.
asm(".globl _NSConcreteStackBlock, _NSConcreteMallocBlock, _NSConcreteGlobalBlock\n"
    ".set _NSConcreteStackBlock, _OBJC_CLASS_RigStackBlock\n"
    ".set _NSConcreteMallocBlock, _OBJC_CLASS_RigMallocBlock\n"
    ".set _NSConcreteGlobalBlock, _OBJC_CLASS_RigGlobalBlock\n");
extern "C" void* _NSConcreteMallocBlock;

extern "C" void* _Block_copy(const void* original) {
  auto* const block = const_cast<Block*>(static_cast<const Block*>(original));
  if (block == nullptr || (block->flags & isGlobal) != 0) return block;
  if ((block->flags & needsFree) != 0) {
    addTo(block, 1);
    return block;
  }
  auto* const copy = static_cast<Block*>(std::malloc(block->descriptor->size));
  std::memcpy(copy, block, block->descriptor->size);
  copy->isa = &_NSConcreteMallocBlock;
  copy->flags = (block->flags & ~references) | needsFree | 1;
  if ((copy->flags & hasCopyAndDispose) != 0) block->descriptor->copy(copy, block);
  return copy;
}

extern "C" void _Block_release(const void* released) {
  auto* const block = const_cast<Block*>(static_cast<const Block*>(released));
  if (block == nullptr || (block->flags & needsFree) == 0) return;
  if ((addTo(block, -1) & references) != 0) return;
  if ((block->flags & hasCopyAndDispose) != 0) block->descriptor->dispose(block);
  std::free(block);
}
