/// The exception family. All members derive from TXError, and so from std::runtime_error.
///
/// `what` is narrow text in the thread's ANSI code page, one message a line (see TXError). `iGetNumber` is the message
/// id for a failure that the library words itself (ZkTools/MessageIds.h), -1 where the text came from the system or the
/// caller. The module tag is always "ZKTOOLS".
#pragma once

#include "ZkBase/Exceptions.h"
#include "ZkTools/Export.h"

#include <deque>
#include <string>

/// The library's exception.
class ZKTOOLS_API TXZkTools : public TXError {
public:
    /// From a format text and its arguments; the number is -1.
    explicit TXZkTools(wchar_t const * pzFormat, ...);
    /// From message `uMessageId` and its arguments; the number is the id.
    explicit TXZkTools(unsigned int uMessageId, ...);
    TXZkTools(TXZkTools const & tOther);
    TXZkTools(TXZkTools && tOther);
    ~TXZkTools() override;
    TXZkTools & operator=(TXZkTools const & tOther);
    TXZkTools & operator=(TXZkTools && tOther);

    /// Adds a message of the library's message module. The number stays.
    void AddMessage(unsigned int uMessageId, ...) override;
};

/// A failure of the data base layers above, which share this family. Deliberately no TXZkTools: a handler for the one
/// does not catch the other. `AddMessage` is that of TXError and does not know this library's messages.
class ZKTOOLS_API TXZkToolsSQLITE : public TXError {
public:
    /// The number is the caller's `iCode`.
    TXZkToolsSQLITE(int iCode, wchar_t const * pzFormat, ...);
    TXZkToolsSQLITE(TXZkToolsSQLITE const & tOther);
    TXZkToolsSQLITE(TXZkToolsSQLITE && tOther);
    ~TXZkToolsSQLITE() override;
    TXZkToolsSQLITE & operator=(TXZkToolsSQLITE const & tOther);
    TXZkToolsSQLITE & operator=(TXZkToolsSQLITE && tOther);
};

/// A violated constraint. Deliberately a sibling of TXZkToolsSQLITE, not its child.
class ZKTOOLS_API TXZkToolsSQLITE_CONSTRAINT : public TXError {
public:
    /// The number is the caller's `iCode`.
    TXZkToolsSQLITE_CONSTRAINT(int iCode, wchar_t const * pzFormat, ...);
    TXZkToolsSQLITE_CONSTRAINT(TXZkToolsSQLITE_CONSTRAINT const & tOther);
    TXZkToolsSQLITE_CONSTRAINT(TXZkToolsSQLITE_CONSTRAINT && tOther);
    ~TXZkToolsSQLITE_CONSTRAINT() override;
    TXZkToolsSQLITE_CONSTRAINT & operator=(TXZkToolsSQLITE_CONSTRAINT const & tOther);
    TXZkToolsSQLITE_CONSTRAINT & operator=(TXZkToolsSQLITE_CONSTRAINT && tOther);
};

/// One error of a lock operation over several items.
struct TSCMError {
    std::wstring sItem;    ///< what the error is about
    std::wstring sMessage; ///< its text; never read as a format
};

/// A lock operation that failed for several items: message 4501 as head line, then the text of each error on a line of
/// its own, in order. The number is -1.
class ZKTOOLS_API TXLockOperation : public TXError {
public:
    explicit TXLockOperation(std::deque<TSCMError> const & tErrors);
    TXLockOperation(TXLockOperation const & tOther);
    TXLockOperation(TXLockOperation && tOther);
    ~TXLockOperation() override;
    TXLockOperation & operator=(TXLockOperation const & tOther);
    TXLockOperation & operator=(TXLockOperation && tOther);
};
