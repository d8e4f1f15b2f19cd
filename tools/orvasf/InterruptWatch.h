#ifndef ORVASF_TOOLS_ORVASF_INTERRUPTWATCH_H
#define ORVASF_TOOLS_ORVASF_INTERRUPTWATCH_H

#include <atomic>
#include <csignal>
#include <thread>

namespace orvasf::tool {

// Turns SIGINT and SIGTERM into a request to stop that long work checks between its steps.
//
// While an instance lives, both signals are blocked in the thread that made it, and so in every
// thread that thread starts afterwards; a watcher thread takes them instead. The first one only
// sets Signal(); a second one ends the process at once, as the signal would without the watch.
// Make one instance at a time, before starting the threads that check it.
class InterruptWatch
{
public:
    InterruptWatch();
    // Stops the watcher and restores the signal mask; a signal that arrived is not acted on
    // (see EndAsSignalled).
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    // The signal that asked to stop (SIGINT or SIGTERM), or 0 while none did. Safe on any thread.
    int Signal() const { return mSignal.load(std::memory_order_relaxed); }

    // Ends the process by the signal that asked to stop, with its default action, so that the
    // caller (a shell, a job runner) sees the process as interrupted; returns when none did.
    void EndAsSignalled();

private:
    void Watch();

    sigset_t mSignals;
    sigset_t mFormerMask;
    std::atomic<int> mSignal{0};
    std::atomic<bool> mStopping{false};
    std::thread mWatcher;
};

} // namespace orvasf::tool

#endif
