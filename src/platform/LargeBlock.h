// Two megabytes of memory in one piece, on one large page of the processor where the system has
// one: touching it costs one page fault in place of five hundred. For what grows to many megabytes
// and stays.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace corvelle {

inline constexpr std::size_t largeBlockBytes = std::size_t{2} << 20;

struct FreeLargeBlock
{
    void operator()(void* block) const { std::free(block); }
};
using LargeBlock = std::unique_ptr<void, FreeLargeBlock>;

// Not cleared. Throws std::bad_alloc like any allocation.
LargeBlock newLargeBlock();

// Gives freed memory back to the system, after work that needed much of it for a moment. Takes
// milliseconds: for the background.
void giveBackFreedMemory();

} // namespace corvelle
