#include "platform/LargeBlock.h"

#include <malloc.h>
#include <new>
#include <sys/mman.h>

namespace corvelle {

LargeBlock newLargeBlock()
{
    void* block = std::aligned_alloc(largeBlockBytes, largeBlockBytes);
    if (!block)
        throw std::bad_alloc();
    ::madvise(
        block, largeBlockBytes, MADV_HUGEPAGE); // a wish; without large pages all works the same
    return LargeBlock(block);
}

void giveBackFreedMemory()
{
    ::malloc_trim(0);
}

} // namespace corvelle
