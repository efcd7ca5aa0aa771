#include "qxshared/HeldLocks.h"

#include <mutex>
#include <type_traits>

namespace qx::detail {

namespace {

// The list of all records. Neither object has a destructor to run, so locks work in static destructors, too.
std::mutex listMutex;
HeldLocks* listHead = nullptr;

static_assert(std::is_trivially_destructible_v<std::mutex>);
static_assert(std::is_trivially_destructible_v<HeldLocks>);

}  // namespace

thread_local HeldLocks HeldLocks::record_;

struct HeldLocks::ThreadEnd {
  ~ThreadEnd() { record_.unlist(); }
};

// The order of the stores and loads below makes the version work without fences: a reader that sees any store of a
// write also sees that the version was odd before it, and one that sees the version even sees all of that write.
void HeldLocks::Entry::write(const void* mutex, const char* file, int line) noexcept {
  const unsigned int version = version_.load(std::memory_order_relaxed);
  version_.store(version + 1, std::memory_order_relaxed);
  mutex_.store(mutex, std::memory_order_release);
  file_.store(file, std::memory_order_release);
  line_.store(line, std::memory_order_release);
  version_.store(version + 2, std::memory_order_release);
}

std::optional<HeldLocks::Location> HeldLocks::Entry::read(const void* mutex) const noexcept {
  const unsigned int version = version_.load(std::memory_order_acquire);
  if (version % 2 != 0 || mutex_.load(std::memory_order_acquire) != mutex) return std::nullopt;
  const Location location{file_.load(std::memory_order_acquire), line_.load(std::memory_order_acquire)};
  // No second try: a change means that the mutex has just been released, so its holder is no longer of interest.
  if (version_.load(std::memory_order_relaxed) != version) return std::nullopt;
  return location;
}

HeldLocks& HeldLocks::mine() noexcept {
  if (record_.state_ == State::UNLISTED) record_.list();
  return record_;
}

std::optional<HeldLocks::Location> HeldLocks::holderOf(const void* mutex) noexcept {
  // Holding the list keeps its threads, and so their records, from going away.
  const std::lock_guard<std::mutex> lock(listMutex);
  for (const HeldLocks* record = listHead; record != nullptr; record = record->next_) {
    for (const Entry& entry : record->entries_) {
      if (const std::optional<Location> location = entry.read(mutex)) return location;
    }
  }
  return std::nullopt;
}

HeldLocks::Entry* HeldLocks::add(const void* mutex, const char* file, int line) noexcept {
  Entry* free = nullptr;
  for (std::size_t i = 0; i < used_; ++i) {
    Entry& entry = entries_[i];
    if (entry.depth_ == 0) {
      if (free == nullptr) free = &entry;
    } else if (entry.mutex_.load(std::memory_order_relaxed) == mutex) {
      ++entry.depth_;
      return &entry;
    }
  }
  if (free == nullptr) {
    if (used_ == CAPACITY) return nullptr;
    free = &entries_[used_++];
  }
  free->depth_ = 1;
  free->write(mutex, file, line);
  return free;
}

void HeldLocks::remove(Entry* entry) noexcept {
  if (entry == nullptr || --entry->depth_ != 0) return;
  entry->mutex_.store(nullptr, std::memory_order_release);
  while (used_ > 0 && entries_[used_ - 1].depth_ == 0) --used_;
}

void HeldLocks::list() noexcept {
  static thread_local const ThreadEnd threadEnd;
  static_cast<void>(threadEnd);
  const std::lock_guard<std::mutex> lock(listMutex);
  state_ = State::LISTED;
  next_ = listHead;
  if (next_ != nullptr) next_->previous_ = this;
  listHead = this;
}

// The storage lasts until the thread has ended, but this is the last moment to take it out of the list. What the
// thread locks after this, in destructors that run later, works on the record that nobody reads any more.
void HeldLocks::unlist() noexcept {
  const std::lock_guard<std::mutex> lock(listMutex);
  state_ = State::ENDED;
  (previous_ != nullptr ? previous_->next_ : listHead) = next_;
  if (next_ != nullptr) next_->previous_ = previous_;
}

}  // namespace qx::detail
