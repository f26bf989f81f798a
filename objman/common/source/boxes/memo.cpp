// A memo hands every operation to its box.

#include "boxesaccess.h"

#include "sys/boxes.h"

static_assert(nomutil::boxes::BoxesAccess::packetLiesOverContent());

Memo::Memo()
    : _box(nullptr),
      _time(0),
      _usage(MU_None),
      _locus(ML_Idle),
      _content{},
      _signals(0),
      _separate(false),
      _indexed(false) {}

Memo::Memo(BoxCommon* box) : Memo() {
  _box = box;
}

void Memo::dispatch() {
  _box->memoDispatch(this);
}

void Memo::updateDispatch(unsigned value, unsigned priority, bool separate) {
  _box->memoUpdateDispatch(this, value, priority, separate);
}

void Memo::dispatchMultiple(unsigned count) {
  _box->memoDispatchMultiple(this, count);
}

void Memo::updateDispatchMultiple(unsigned value, unsigned priority, unsigned count) {
  _box->memoUpdateDispatchMultiple(this, value, priority, count);
}

void Memo::schedule(unsigned delayMillis) {
  _box->memoSchedule(this, delayMillis);
}

void Memo::cancel() {
  _box->memoCancel(this);
}

void Memo::update(unsigned value, unsigned priority, bool separate) {
  _box->memoUpdate(this, value, priority, separate);
}

void Memo::start(unsigned intervalMillis, unsigned value, unsigned priority) {
  _box->timerStart(this, intervalMillis, value, priority);
}

void Memo::stop() {
  _box->timerStop(this);
}

void Memo::getState(MemoLocus& locus, unsigned& remaining) {
  _box->getMemoState(this, locus, remaining);
}

// By the box thread, which holds the lock for more than one memo.
void Memo::_boxEnter() {
  _box->_enter(this);
  if (_locus == ML_Box) static_cast<Box*>(_box)->_wake();  // only a Box has a queue
}
