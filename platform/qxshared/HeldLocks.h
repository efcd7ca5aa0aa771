// Which thread holds which mutex, and where it took it.

#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>

namespace qx::detail {

/// The mutexes that one thread holds through a DeadLockFreeLocker, with the source location of each. A thread writes
/// only its own record, without a lock and without allocation; `holderOf` reads those of all threads. The lock-taking
/// side is the one that must be cheap: it runs on every lock, the reading side only when somebody has waited for long.
class HeldLocks {
 public:
  /// A place in the source. The file's name is a string literal.
  struct Location {
    const char* file;
    int line;
  };

  /// One held mutex. Written by the thread that holds it, read by any.
  class Entry {
   public:
    constexpr Entry() noexcept = default;

   private:
    friend class HeldLocks;

    void write(const void* mutex, const char* file, int line) noexcept;
    std::optional<Location> read(const void* mutex) const noexcept;

    // Odd while the rest is being written; a reader that finds it changed has read a mixture.
    std::atomic<unsigned int> version_{0};
    std::atomic<int> line_{0};
    std::atomic<const char*> file_{""};
    std::atomic<const void*> mutex_{nullptr};
    // How often the thread has taken the mutex; 0 makes the entry free. The owner's own.
    unsigned int depth_ = 0;
  };

  /// More mutexes than this at a time, of one thread, go unrecorded.
  static constexpr std::size_t CAPACITY = 32;

  HeldLocks(const HeldLocks&) = delete;
  HeldLocks& operator=(const HeldLocks&) = delete;

  /// The calling thread's record.
  static HeldLocks& mine() noexcept;

  /// Where the thread that holds `mutex` took it first; nothing if no record of a running thread has it.
  static std::optional<Location> holderOf(const void* mutex) noexcept;

  /// Records that the calling thread has taken `mutex`. A mutex taken again keeps the location of the first time. The
  /// result is for `remove`; null if the record is full.
  Entry* add(const void* mutex, const char* file, int line) noexcept;

  /// Takes back one `add`, in any order among others. To be called before the mutex is unlocked. Null does nothing.
  void remove(Entry* entry) noexcept;

 private:
  enum class State { UNLISTED, LISTED, ENDED };

  struct ThreadEnd;

  constexpr HeldLocks() noexcept = default;

  void list() noexcept;
  void unlist() noexcept;

  static thread_local HeldLocks record_;

  std::array<Entry, CAPACITY> entries_;
  // Entries from here on are free.
  std::size_t used_ = 0;
  State state_ = State::UNLISTED;
  // Neighbours in the list of all records; guarded by its mutex.
  HeldLocks* previous_ = nullptr;
  HeldLocks* next_ = nullptr;
};

}  // namespace qx::detail
