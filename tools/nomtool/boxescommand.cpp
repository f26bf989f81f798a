// Event boxes under load: producers dispatch as fast as they can, timers and schedules run beside
// them, and every box has a receiver. Receivers keep their figures to themselves until the end.
#include "commands.h"

#include "boxesfigures.h"
#include "storednumber.h"

#include "nomos/relativetime.h"

#include "sys/boxes.h"
#include "sys/messages.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <stop_token>
#include <thread>
#include <vector>

namespace nomtool {

namespace {

using Nanos = std::int64_t;

Nanos clockNanos() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The nanosecond in which a millisecond of the relative clock begins, less the millisecond. A
// reading lies behind the beginning of its millisecond; that of some milliseconds read without a
// pause lies right behind it.
Nanos originOfRelativeTime() {
  constexpr std::int64_t kMillis = 5;
  Nanos origin = INT64_MAX;
  const std::int64_t end = nosGetRelativeTime() + kMillis;
  for (std::int64_t millis = 0; millis < end;) {
    millis = nosGetRelativeTime();
    origin = std::min(origin, clockNanos() - millis * 1'000'000);
  }
  return origin;
}

// A box, its memos and its receiver. Values tell memos apart: 0 is nothing received, then come the
// stop, the producers' events and probes, the timers and the schedules.
class Station {
 public:
  Station(BoxManager& manager, const BoxesOptions& options, unsigned seed)
      : _manager(manager),
        _options(options),
        _random(seed),
        _due(options.timers + options.schedules),
        _sent(options.producers) {}

  int open();
  // Starts the timers and schedules and receives until stopped. origin as above.
  void receive(Nanos origin);
  void stop() { _stop->dispatch(); }

  // By producer i: one event, and a probe of the latency unless the last is still on its way.
  void send(unsigned i) { _events[i]->dispatch(); }
  void probe(unsigned i) {
    Nanos none = 0;
    if (_sent[i].compare_exchange_strong(none, clockNanos())) _probes[i]->dispatch();
  }

  const StationFigures& figures() const { return _figures; }
  void close() { _manager.boxDeallocate(_box); }

 private:
  unsigned firstProbe() const { return 2 + _options.producers; }
  unsigned firstDelayed() const { return 2 + 2 * _options.producers; }
  void delay(unsigned i);

  BoxManager& _manager;
  const BoxesOptions& _options;
  std::mt19937 _random;
  Box* _box = nullptr;
  Memo* _stop = nullptr;
  std::vector<Memo*> _events;
  std::vector<Memo*> _probes;
  std::vector<Memo*> _delayed;  // the timers, then the schedules
  std::vector<std::int64_t> _due;
  std::vector<std::atomic<Nanos>> _sent;  // 0: the probe has arrived
  StationFigures _figures;
};

int Station::open() {
  int status = _manager.boxAllocate(_box, false);
  unsigned value = 1;
  const auto add = [&](Memo*& memo, unsigned priority) {
    if (status == 0) status = _box->memoAllocate(memo, value++, priority, false);
  };
  add(_stop, 1);
  for (unsigned i = 0; i < _options.producers; ++i) add(_events.emplace_back(), 5);
  for (unsigned i = 0; i < _options.producers; ++i) add(_probes.emplace_back(), 10);
  for (unsigned i = 0; i < _options.timers && status == 0; ++i) {
    status = _box->timerAllocate(_delayed.emplace_back());
    ++value;
  }
  for (unsigned i = 0; i < _options.schedules; ++i) add(_delayed.emplace_back(), 15);
  return status;
}

void Station::delay(unsigned i) {
  constexpr unsigned kLongest = 2'000;
  const unsigned millis = 1 + static_cast<unsigned>(_random() % kLongest);
  _due[i] = nosGetRelativeTime() + millis;
  if (i < _options.timers) {
    _delayed[i]->start(millis, firstDelayed() + i, 15);
  } else {
    _delayed[i]->schedule(millis);
  }
}

void Station::receive(Nanos origin) {
  for (unsigned i = 0; i < _delayed.size(); ++i) delay(i);
  unsigned value = 0;
  unsigned left = 0;
  for (;;) {
    _box->receive(kNosInfinite, value, left);
    if (value == 1) return;
    if (value == 0) continue;
    ++_figures.receives;
    if (value >= firstDelayed()) {
      const unsigned i = value - firstDelayed();
      const Nanos late = clockNanos() - (_due[i] * 1'000'000 + origin);
      (i < _options.timers ? _figures.timerLateness : _figures.scheduleLateness).push_back(late);
      delay(i);
    } else if (value >= firstProbe()) {
      std::atomic<Nanos>& sent = _sent[value - firstProbe()];
      _figures.latencies.push_back(clockNanos() - sent.load());
      sent = 0;
    }
  }
}

// Dispatches to all stations in turn until the time is over; the number of events.
std::uint64_t produce(std::vector<std::unique_ptr<Station>>& stations, unsigned producer,
                      const std::stop_token& ends) {
  constexpr Nanos kProbeEvery = 1'000'000;
  std::uint64_t events = 0;
  Nanos nextProbe = 0;
  while (!ends.stop_requested()) {
    for (int round = 0; round < 64; ++round) {
      for (const auto& station : stations) station->send(producer);
    }
    events += 64 * stations.size();
    if (const Nanos now = clockNanos(); now >= nextProbe) {
      for (const auto& station : stations) station->probe(producer);
      nextProbe = now + kProbeEvery;
    }
  }
  return events;
}

// Ends the receivers with its scope.
struct Stop {
  ~Stop() {
    for (const auto& station : stations) station->stop();
  }
  const std::vector<std::unique_ptr<Station>>& stations;
};

}  // namespace

int boxesCommand(const BoxesOptions& options, std::ostream& out, std::ostream& err) {
  BoxManager manager("nomtool");
  int status = manager.initialise(true);
  std::vector<std::unique_ptr<Station>> stations;
  for (unsigned i = 0; i < options.boxes && status == 0; ++i) {
    stations.push_back(std::make_unique<Station>(manager, options, i + 1));
    status = stations.back()->open();
  }
  if (status != 0) {
    err << "nomtool: " << messageText(status) << '\n';
    return kExitRefused;
  }

  BoxesFigures figures;
  const Nanos origin = originOfRelativeTime();
  const Nanos begin = clockNanos();
  {
    std::vector<std::jthread> threads;
    const Stop stop{stations};  // also when a thread cannot be made
    for (const auto& station : stations) {
      threads.emplace_back([&station, origin] { station->receive(origin); });
    }
    std::atomic<std::uint64_t> events{0};
    {
      std::vector<std::jthread> producers;
      for (unsigned i = 0; i < options.producers; ++i) {
        producers.emplace_back(
            [&, i](const std::stop_token& token) { events += produce(stations, i, token); });
      }
      std::this_thread::sleep_for(std::chrono::duration<double>(options.seconds));
    }
    figures.events = events;
  }
  figures.seconds = static_cast<double>(clockNanos() - begin) / 1e9;
  for (const auto& station : stations) {
    figures.add(station->figures());
    station->close();
  }
  options.json ? printJson(figures, out) : printTable(figures, out);
  return kExitDone;
}

}  // namespace nomtool
