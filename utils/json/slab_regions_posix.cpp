// Where slabs come from: regions of 1 MiB mapped from the system and cut into 32 KiB slabs.
//
// aligned_alloc(32 KiB, 32 KiB) from malloc left a gap before nearly every slab and touched a
// page of it, so 1.6 GB of slabs held about 1.9 GB (json_numbers: peak 2.54 GB, 2.15 GB with
// regions). A region's slabs are handed out lowest first; a region with a free slab waits on a
// list. Up to kKeptEmpty regions whose slabs are all free stay mapped for the next builds;
// beyond that, an empty region is unmapped. (Unmapping them all made every tree read after a
// drop fault its pages in again: json_bench's reads took about 1.5 times as long, its clones 2 to
// 3 times.)
#include <sys/mman.h>

#include <cstdint>
#include <mutex>
#include <new>

#include <zrad/json.h>

#include "json/element_slab.h"

namespace zrad::json {

struct SlabRegion {
  char* base;          // the mapping
  char* first;         // its first slab (base rounded up to kSlabBytes)
  uint32_t freeMask;   // the slabs not handed out, bit i for slab i
  uint32_t allMask;    // every slab the region holds (31 when the mapping is not aligned)
  uint32_t untouched;  // the slabs never handed out, whose pages are not there yet
  SlabRegion* prev;    // neighbours on the list of regions with a free slab
  SlabRegion* next;
};

namespace {

constexpr size_t kRegionBytes = 1 << 20;
constexpr uint32_t kRegionSlabs = kRegionBytes / kSlabBytes;
static_assert(kRegionSlabs == 32, "a region's slabs fit its 32-bit masks");

constexpr uint32_t kKeptEmpty = 64;

std::mutex gLock;
SlabRegion* gOpen = nullptr;  // the regions with a free slab
uint32_t gEmpty = 0;          // how many of them have every slab free

void link(SlabRegion* r) {
  r->prev = nullptr;
  r->next = gOpen;
  if (gOpen) gOpen->prev = r;
  gOpen = r;
}

void unlink(SlabRegion* r) {
  (r->prev ? r->prev->next : gOpen) = r->next;
  if (r->next) r->next->prev = r->prev;
}

SlabRegion* mapRegion() {
  auto* r = new (std::nothrow) SlabRegion;
  void* p = r ? mmap(nullptr, kRegionBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) : MAP_FAILED;
  if (p == MAP_FAILED) {
    delete r;
    throw ZrError(Zrad::eOutOfMemory);
  }
  r->base = static_cast<char*>(p);
  const uintptr_t at = reinterpret_cast<uintptr_t>(p);
  const uintptr_t first = (at + kSlabBytes - 1) & ~uintptr_t(kSlabBytes - 1);
  r->first = reinterpret_cast<char*>(first);
  r->allMask = first == at ? ~0u : ~0u >> 1;
  r->freeMask = r->untouched = r->allMask;
  link(r);
  ++gEmpty;
  return r;
}

}  // namespace

SlabHead* newSlab(bool chunk) {
  SlabRegion* r;
  char* at;
  bool untouched;
  {
    std::lock_guard<std::mutex> hold(gLock);
    r = gOpen ? gOpen : mapRegion();
    gEmpty -= r->freeMask == r->allMask;
    const uint32_t bit = r->freeMask & -r->freeMask;
    r->freeMask &= ~bit;
    if (!r->freeMask) unlink(r);
    untouched = (r->untouched & bit) != 0;
    r->untouched &= ~bit;
    at = r->first + size_t(__builtin_ctz(bit)) * kSlabBytes;
  }
  // A new slab's pages are put in place with one call rather than a fault each (where the system
  // can; else they fault in as before): 9-18% off a fresh process's first read of json_bench's
  // documents, 1.7 rather than 2.1 s to read 50 million numbers (json_numbers).
  if (untouched) madvise(at, kSlabBytes, MADV_POPULATE_WRITE);
  SlabHead* head = new (at) SlabHead;
  head->region = r;
  head->chunk = chunk;
  head->live.store(0, std::memory_order_relaxed);
  return head;
}

void freeSlab(SlabHead* slab) {
  SlabRegion* r = slab->region;
  const uint32_t bit = 1u << ((reinterpret_cast<char*>(slab) - r->first) / kSlabBytes);
  std::lock_guard<std::mutex> hold(gLock);
  if (!r->freeMask) link(r);
  r->freeMask |= bit;
  if (r->freeMask != r->allMask || ++gEmpty <= kKeptEmpty) return;
  --gEmpty;
  unlink(r);
  munmap(r->base, kRegionBytes);
  delete r;
}

}  // namespace zrad::json
