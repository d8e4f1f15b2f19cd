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
    if (pTotal > 0)
        Show("reading " + mLabel + ": " + std::to_string(pDone * 100 / pTotal) + "%");
    else
        Show("reading " + mLabel + ": " + std::to_string(pDone >> 20) + " MB");
}

void ProgressReporter::Show(const std::string& pText)
{
    if (!mEnabled) return;
    // "\r" returns to the line's start and "\x1b[K" erases the rest of the previous text.
    std::fprintf(stderr, "\r%s\x1b[K", pText.c_str());
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
