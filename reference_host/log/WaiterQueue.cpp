#include "reference_host/log/WaiterQueue.h"

#include <windows.h>

#include <utility>

namespace refhost {

Waiter::Word Waiter::Wait() {
  Word none = Word::None;
  while (_word == Word::None) WaitOnAddress(&_word, &none, sizeof _word, INFINITE);
  return _word;
}

void Waiter::Tell(Word word) {
  _word = word;
  // Only the address counts, should the thread be on its way already.
  WakeByAddressSingle(&_word);
}

void WaiterQueue::Add(Waiter& thread) {
  (_first == nullptr ? _first : _last->_next) = &thread;
  _last = &thread;
}

Waiter* WaiterQueue::Take() {
  return _first == nullptr ? nullptr : std::exchange(_first, _first->_next);
}

}  // namespace refhost
