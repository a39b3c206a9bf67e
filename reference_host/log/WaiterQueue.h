#pragma once

#include <atomic>

namespace refhost {

/// A thread that waits for one word of another. Each has a place of its own to wait at: threads
/// that share a condition are all woken by each of its changes, and meet again at its lock.
class Waiter {
 public:
  enum class Word { None, Done, Turn };

  /// Blocks until the word is said. The object ends with the wait, not before.
  Word Wait();

  /// Says the word, once; the object may be gone when it returns.
  void Tell(Word word);

 private:
  friend class WaiterQueue;
  std::atomic<Word> _word = Word::None;
  Waiter* _next = nullptr;
};

/// Threads that wait, the first one first. Needs its owner's lock; allocates nothing.
class WaiterQueue {
 public:
  void Add(Waiter& thread);

  /// @return the first one, which is taken out; null when there is none.
  Waiter* Take();

 private:
  Waiter* _first = nullptr;
  Waiter* _last = nullptr;
};

}  // namespace refhost
