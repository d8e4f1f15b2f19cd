#ifndef ORVSDK_HOST_CORE_ORVSTATUS_H
#define ORVSDK_HOST_CORE_ORVSTATUS_H

#include <string>

namespace orvsdk {

/// Outcome of a host operation that can fail: success, or failure with a message. A new status
/// is a success with an empty message.
class OrvStatus
{
public:
    ///@{
    /// IsSuccess: true on success; Error: true on failure.
    bool IsSuccess() const { return !mError; }
    bool Error() const { return mError; }
    ///@}
    /// The failure's message; "" on success.
    const char* GetErrorString() const { return mMessage.c_str(); }

    /// Marks the status as failed with pMessage (null counts as "").
    void SetError(const char* pMessage)
    {
        mError = true;
        mMessage = pMessage ? pMessage : "";
    }
    /// Back to success with an empty message.
    void Clear()
    {
        mError = false;
        mMessage.clear();
    }

private:
    bool mError = false;
    std::string mMessage;
};

} // namespace orvsdk

#endif
