// Work on pieces of a stream by several threads: one reads the pieces, some work on them, and the
// caller writes them in the order in which they were read. Pieces lie in slots of the caller, which
// go round, so that memory is bounded whatever the stream's length. Slots travel through event
// boxes.
#ifndef NOMTOOL_PIPELINE_H
#define NOMTOOL_PIPELINE_H

#include <functional>

namespace nomtool {

// What is done with the piece in a slot, 0 to slotCount - 1. What a step throws ends the run.
struct PipelineSteps {
  std::function<bool(unsigned slot)> read;   // by one thread; false: there is no further piece
  std::function<void(unsigned slot)> work;   // by several threads, each with another slot
  std::function<bool(unsigned slot)> write;  // by the calling thread; false ends the run
};

// Returns when every piece is written or a step has ended the run, and all threads have ended.
// Throws what the first failing step threw; std::bad_alloc or std::runtime_error without a box or a
// thread. REQUIRES: workerCount and slotCount are 1 to 1,000.
void runPipeline(unsigned workerCount, unsigned slotCount, const PipelineSteps& steps);

// Workers for this machine: one for each processor.
unsigned defaultWorkerCount();

}  // namespace nomtool

#endif  // NOMTOOL_PIPELINE_H
