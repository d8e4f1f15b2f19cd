#include "tools/orvasf/InterruptWatch.h"

#include <pthread.h>

#include <ctime>

namespace orvasf::tool {

namespace {

// How long the watcher waits for a signal before it looks whether it should stop.
constexpr long kPollNanoseconds = 50'000'000;

// Delivers pSignal to this thread with its default action: for SIGINT and SIGTERM, the end of
// the process.
void RaiseWithDefaultAction(int pSignal)
{
    std::signal(pSignal, SIG_DFL);
    sigset_t lSignal;
    sigemptyset(&lSignal);
    sigaddset(&lSignal, pSignal);
    pthread_sigmask(SIG_UNBLOCK, &lSignal, nullptr);
    std::raise(pSignal);
}

} // namespace

InterruptWatch::InterruptWatch()
{
    sigemptyset(&mSignals);
    sigaddset(&mSignals, SIGINT);
    sigaddset(&mSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &mSignals, &mFormerMask);
    mWatcher = std::thread(&InterruptWatch::Watch, this);
}

InterruptWatch::~InterruptWatch()
{
    mStopping = true;
    mWatcher.join();
    pthread_sigmask(SIG_SETMASK, &mFormerMask, nullptr);
}

void InterruptWatch::EndAsSignalled()
{
    const int lSignal = Signal();
    if (lSignal != 0) RaiseWithDefaultAction(lSignal);
}

// Takes the blocked signals as they come: the first asks to stop, a second ends the process.
void InterruptWatch::Watch()
{
    const timespec lPoll{0, kPollNanoseconds};
    while (!mStopping)
    {
        const int lSignal = sigtimedwait(&mSignals, nullptr, &lPoll);
        if (lSignal <= 0) continue;
        if (Signal() != 0) RaiseWithDefaultAction(lSignal);
        mSignal = lSignal;
    }
}

} // namespace orvasf::tool
