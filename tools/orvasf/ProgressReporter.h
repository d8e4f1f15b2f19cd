#ifndef ORVASF_TOOLS_ORVASF_PROGRESSREPORTER_H
#define ORVASF_TOOLS_ORVASF_PROGRESSREPORTER_H

#include <cstdint>
#include <string>

namespace orvasf::tool {

// Shows how far a long task (the reading of a file, a batch) has come, as one line on standard
// error that is rewritten in place. Shows nothing at all when standard error is not a terminal, so logs and
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

    // True when standard error is a terminal, so that the line is shown.
    bool IsEnabled() const { return mEnabled; }
    // pDone bytes of pTotal (0 when unknown) have been read.
    void Update(uint64_t pDone, uint64_t pTotal);
    // Shows pText (one line, without the label) in place of the line shown before.
    void Show(const std::string& pText);
    // Clears the line; later updates show it again.
    void Finish();

private:
    std::string mLabel;
    bool mEnabled;
    bool mShown = false;
};

} // namespace orvasf::tool

#endif
