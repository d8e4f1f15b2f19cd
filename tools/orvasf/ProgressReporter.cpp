#include "tools/orvasf/ProgressReporter.h"

#include <cstdio>
#include <unistd.h>

namespace orvasf::tool {

ProgressReporter::ProgressReporter(std::string pLabel)
    : mLabel(std::move(pLabel)), mEnabled(isatty(STDERR_FILENO) == 1)
{
}

ProgressReporter::~ProgressReporter()
{
    Finish();
}

void ProgressReporter::Update(uint64_t pDone, uint64_t pTotal)
{
    if (!mEnabled) return;
    // "\r" returns to the line's start and "\x1b[K" erases the rest of the previous text.
    if (pTotal > 0)
        std::fprintf(stderr, "\rreading %s: %3u%%\x1b[K", mLabel.c_str(),
                     static_cast<unsigned>(pDone * 100 / pTotal));
    else
        std::fprintf(stderr, "\rreading %s: %llu MB\x1b[K", mLabel.c_str(),
                     static_cast<unsigned long long>(pDone >> 20));
    std::fflush(stderr);
    mShown = true;
}

void ProgressReporter::Finish()
{
    if (!mShown) return;
    std::fprintf(stderr, "\r\x1b[K");
    std::fflush(stderr);
    mShown = false;
}

} // namespace orvasf::tool
