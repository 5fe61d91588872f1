// The two orders in which a failure tells what failed and the system's reason for it. Every site uses one of them, but
// the one of a file stream, which cuts the reason (TFStream::TestGoodness).
//
// Deliberate: in both the system's text goes in as the format, so that a percent sign in it is read as a conversion.
#pragma once

#include "ZkTools/Exceptions.h"

#include <string>

/// What failed first, the system's reason behind it.
/// \param dwError the error code, read by the caller before anything else could change it
template <typename... TArgs>
[[nodiscard]] TXZkTools tFailureWithReason(unsigned long dwError, unsigned int uMessageId, TArgs... tArgs) {
    std::wstring const sReason = sGetErrorString(dwError);
    TXZkTools tFailure(uMessageId, tArgs...);
    tFailure.AddMessageStr(sReason.c_str());
    return tFailure;
}

/// The system's reason first, what failed behind it.
template <typename... TArgs>
[[nodiscard]] TXZkTools tReasonWithFailure(unsigned long dwError, unsigned int uMessageId, TArgs... tArgs) {
    TXZkTools tFailure(sGetErrorString(dwError).c_str());
    tFailure.AddMessage(uMessageId, tArgs...);
    return tFailure;
}
