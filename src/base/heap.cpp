// Zero-filled heap blocks with a known size.
//
// Every block carries a small header with its logical size, so that a step
// array's capacity is always "block size / record size". Large blocks (step
// arrays of long scripts, the writer's document) live in a reserved address
// range and grow in place by committing more pages: a load that adds records
// chunk by chunk then costs no copy of the whole array per chunk, and pages
// that are committed but never written cost no memory.
#include "base/heap.h"

#include <windows.h>
#include <stdint.h>

#include <string.h>

namespace {

enum : uint32_t { BLOCK_HEAP = 0x5A48, BLOCK_VIRTUAL = 0x5A56 };

struct BlockHeader {
    size_t size;      // logical size, what HeapBlockSize reports
    size_t reserved;  // virtual blocks: bytes reserved after the header
    size_t committed; // virtual blocks: bytes committed after the header
    uint32_t kind;
    uint32_t pad;
};

const size_t kHeader = (sizeof(BlockHeader) + 15) & ~size_t(15);
const size_t kVirtualThreshold = 1u << 20;  // blocks of 1 MiB and more
const size_t kPage = 4096;

size_t RoundUp(size_t n, size_t to) { return (n + to - 1) / to * to; }

BlockHeader* HeaderOf(const void* block) {
    return (BlockHeader*)((char*)block - kHeader);
}

// Reserve room to grow: generous on 64-bit, where address space is free.
size_t ReserveFor(size_t size) {
    size_t want = size * 4;
#if defined(_WIN64)
    const size_t floor = size_t(1) << 32;  // 4 GiB of address space
#else
    const size_t floor = size_t(256) << 20;
#endif
    if (want < floor) want = floor;
    return RoundUp(want + kHeader, 1 << 16);
}

void* VirtualBlock(size_t size) {
    size_t reserve = ReserveFor(size);
    char* base = (char*)VirtualAlloc(nullptr, reserve, MEM_RESERVE, PAGE_NOACCESS);
    if (!base) {
        reserve = RoundUp(size + kHeader, 1 << 16);
        base = (char*)VirtualAlloc(nullptr, reserve, MEM_RESERVE, PAGE_NOACCESS);
        if (!base) return nullptr;
    }
    size_t commit = RoundUp(size + kHeader, kPage);
    if (!VirtualAlloc(base, commit, MEM_COMMIT, PAGE_READWRITE)) {
        VirtualFree(base, 0, MEM_RELEASE);
        return nullptr;
    }
    BlockHeader* h = (BlockHeader*)base;
    h->size = size;
    h->reserved = reserve - kHeader;
    h->committed = commit - kHeader;
    h->kind = BLOCK_VIRTUAL;
    return base + kHeader;
}

}  // namespace

void* HeapAllocZero(size_t size) {
    if (size >= kVirtualThreshold) return VirtualBlock(size);
    char* p = (char*)HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, size + kHeader);
    if (!p) return nullptr;
    BlockHeader* h = (BlockHeader*)p;
    h->size = size;
    h->kind = BLOCK_HEAP;
    return p + kHeader;
}

void HeapFreeBlock(void* block) {
    if (!block) return;
    BlockHeader* h = HeaderOf(block);
    if (h->kind == BLOCK_VIRTUAL)
        VirtualFree(h, 0, MEM_RELEASE);
    else
        HeapFree(GetProcessHeap(), 0, h);
}

size_t HeapBlockSize(const void* block) {
    return block ? HeaderOf(block)->size : 0;
}

char* AllocText(size_t length) {
    size_t size = length + 256;
    return (char*)HeapAllocZero(size);
}

// Allocates a zero-filled block of newSize (at least 256 bytes) holding the old
// content up to the smaller size, and frees the old block. A large block grows
// or shrinks in place. On failure the old block is freed too and null returned.
void* GrowBlock(void* block, size_t newSize) {
    if (newSize < 256) newSize = 256;
    if (!block) return HeapAllocZero(newSize);
    BlockHeader* h = HeaderOf(block);
    size_t oldSize = h->size;
    if (h->kind == BLOCK_VIRTUAL && newSize <= h->reserved) {
        char* data = (char*)block;
        if (newSize > h->committed) {
            // Commit ahead by an eighth, so that growing one record at a time
            // does not cost one system call per page; pages committed and not
            // yet written take no memory.
            size_t ahead = newSize + h->committed / 8;
            if (ahead > h->reserved) ahead = h->reserved;
            size_t commit = RoundUp(ahead + kHeader, kPage) - kHeader;
            if (commit > h->reserved) commit = h->reserved;
            if (!VirtualAlloc(data + h->committed, commit - h->committed, MEM_COMMIT,
                              PAGE_READWRITE)) {
                HeapFreeBlock(block);
                return nullptr;
            }
            h->committed = commit;
        }
        if (newSize < oldSize) {
            // Keep everything past the logical end zero, so a later growth
            // reads as a fresh zero-filled block; give whole pages back.
            size_t keep = RoundUp(newSize + kHeader, kPage) - kHeader;
            if (keep < h->committed) {
                VirtualFree(data + keep, h->committed - keep, MEM_DECOMMIT);
                h->committed = keep;
            }
            memset(data + newSize, 0, keep - newSize);
        }
        h->size = newSize;
        return block;
    }
    if (h->kind == BLOCK_HEAP && newSize < kVirtualThreshold) {
        void* p = HeapReAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, h, newSize + kHeader);
        if (!p) {
            HeapFreeBlock(block);
            return nullptr;
        }
        h = (BlockHeader*)p;
        h->size = newSize;
        return (char*)p + kHeader;
    }
    void* fresh = HeapAllocZero(newSize);
    if (fresh) memcpy(fresh, block, oldSize < newSize ? oldSize : newSize);
    HeapFreeBlock(block);
    return fresh;
}

// Grows a heap text so that it holds `length` plus 2 bytes; a null text is
// allocated. Does nothing when the block is already large enough.
char* EnsureCapacity(char* text, size_t length) {
    if (!text) return (char*)HeapAllocZero(length + 2 < 256 ? 256 : length + 2);
    if (HeapBlockSize(text) >= length + 2) return text;
    return (char*)GrowBlock(text, length + 2);
}
