// For libobjc's own header of this name, which Debian does not have. tools/gnustep/blocks.mm implements it.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

void* _Block_copy(const void* block);
void _Block_release(const void* block);

#ifdef __cplusplus
}
#endif

#define Block_copy(...) ((__typeof(__VA_ARGS__))_Block_copy((const void*)(__VA_ARGS__)))
#define Block_release(...) _Block_release((const void*)(__VA_ARGS__))
