#ifndef ORVASF_TOOLS_ORVASF_PROGRESSREPORTER_H
#define ORVASF_TOOLS_ORVASF_PROGRESSREPORTER_H

#include <cstdint>
#include <string>

namespace orvasf::tool {

// Shows how far the reading of a long file has come, as one line on standard error that is
// rewritten in place. Shows nothing at all when standard error is not a terminal, so logs and
// captured output stay clean.
class ProgressReporter
{
public:
    // pLabel names the file being read.
    explicit ProgressReporter(std::string pLabel);
    // Clears the line when anything was shown.
    ~ProgressReporter();
    ProgressReporter(const ProgressReporter&) = delete;
    ProgressReporter& operator=(const ProgressReporter&) = delete;

    // pDone bytes of pTotal (0 when unknown) have been read.
    void Update(uint64_t pDone, uint64_t pTotal);
    // Clears the line; later updates show it again.
    void Finish();

private:
    std::string mLabel;
    bool mEnabled;
    bool mShown = false;
};

} // namespace orvasf::tool

#endif
