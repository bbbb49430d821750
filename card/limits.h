#ifndef CARD_LIMITS_H
#define CARD_LIMITS_H

// Limits of reading many files at once, for tolvik-info and the card window.

namespace limits {

// Files a thread may have read ahead of the output: enough to keep every
// thread busy while one slow file holds up the output, few enough that memory
// does not grow with the number of files. The card window keeps as many
// pictures per thread on their way.
inline constexpr int kFilesInFlightPerThread = 4;

// More threads than this only queue for the same disk; also bounds what a
// mistyped -j costs.
inline constexpr int kMaxJobs = 256;

// tolvik-info gives up on a file whose reading has not ended after this long
// (a share that hangs, a card pulled out) and goes on with the next; a card
// reads a file in milliseconds.
inline constexpr int kUnansweredSeconds = 20;

} // namespace limits

#endif // CARD_LIMITS_H
