#include "cad/record_pool.h"

#include <array>
#include <mutex>
#include <new>

namespace tv::cad {

namespace {

#if defined(__SANITIZE_ADDRESS__)
// The address sanitizer must see every record as a block of its own to find use after free.
constexpr bool kPooled = false;
#else
constexpr bool kPooled = true;
#endif

// Steps of the default alignment of new, so every record is aligned as the allocator's are.
constexpr std::size_t kGrain = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
constexpr std::size_t kLargestClass = 512;
constexpr std::size_t kClassCount = kLargestClass / kGrain;
// Slabs grow as records are made, so a small drawing does not pay for a large one's slabs.
constexpr std::size_t kFirstSlab = 4 << 10;
constexpr std::size_t kLargestSlab = 64 << 10;

struct FreeRecordLink {
  FreeRecordLink* next;
};

class RecordPool {
 public:
  void* allocate(std::size_t cls) {
    std::lock_guard lock(mutex_);
    if (FreeRecordLink* f = free_[cls]) {
      free_[cls] = f->next;
      return f;
    }
    // New records of every class follow one another in the slab, as they were made: an insert
    // lies next to its attributes and a scan in drawing order reads memory in order.
    const std::size_t size = (cls + 1) * kGrain;
    if (static_cast<std::size_t>(end_ - next_) < size) {
      // The old slab's rest (less than one record) is left; slabs live as long as the process.
      next_ = static_cast<char*>(::operator new(slabBytes_));
      end_ = next_ + slabBytes_;
      if (slabBytes_ < kLargestSlab) slabBytes_ *= 2;
    }
    void* p = next_;
    next_ += size;
    return p;
  }

  void free(void* p, std::size_t cls) noexcept {
    std::lock_guard lock(mutex_);
    free_[cls] = ::new (p) FreeRecordLink{free_[cls]};
  }

 private:
  std::mutex mutex_;
  std::array<FreeRecordLink*, kClassCount> free_{};
  char* next_ = nullptr;  // unused part of the newest slab
  char* end_ = nullptr;
  std::size_t slabBytes_ = kFirstSlab;
};

RecordPool& Pool() {
  // Never destroyed: records of static drawings may be freed after the pool's own end.
  static RecordPool* pool = new RecordPool;
  return *pool;
}

std::size_t ClassOf(std::size_t size) { return (size + kGrain - 1) / kGrain - 1; }

}  // namespace

void* AllocateRecord(std::size_t size) {
  if (!kPooled || size == 0 || size > kLargestClass) return ::operator new(size);
  return Pool().allocate(ClassOf(size));
}

void FreeRecord(void* p, std::size_t size) noexcept {
  if (!p) return;
  if (!kPooled || size == 0 || size > kLargestClass) {
    ::operator delete(p, size);
    return;
  }
  Pool().free(p, ClassOf(size));
}

}  // namespace tv::cad
