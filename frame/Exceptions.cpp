#include "ZkTools/Exceptions.h"

#include "ZkBase/Messages.h"
#include "ZkTools/MessageIds.h"
#include "frame/Library.h"

#include <cstdarg>
#include <utility>

namespace {

constexpr wchar_t const * pzModuleTag = L"ZKTOOLS";

} // namespace

TXZkTools::TXZkTools(wchar_t const * pzFormat, ...) : TXError(pzModuleTag, -1) {
    va_list pArgs;
    va_start(pArgs, pzFormat);
    StoreMessage(pzFormat, pArgs);
    va_end(pArgs);
}

TXZkTools::TXZkTools(unsigned int uMessageId, ...) : TXError(pzModuleTag, static_cast<int>(uMessageId)) {
    va_list pArgs;
    va_start(pArgs, uMessageId);
    StoreMessage(hGetMessageModule(), uMessageId, pArgs);
    va_end(pArgs);
}

TXZkTools::TXZkTools(TXZkTools const &) = default;
TXZkTools::TXZkTools(TXZkTools &&) = default;
TXZkTools::~TXZkTools() = default;
TXZkTools & TXZkTools::operator=(TXZkTools const &) = default;
TXZkTools & TXZkTools::operator=(TXZkTools &&) = default;

void TXZkTools::AddMessage(unsigned int uMessageId, ...) {
    va_list pArgs;
    va_start(pArgs, uMessageId);
    StoreMessage(hGetMessageModule(), uMessageId, pArgs);
    va_end(pArgs);
}

TXZkToolsSQLITE::TXZkToolsSQLITE(int iCode, wchar_t const * pzFormat, ...) : TXError(pzModuleTag, iCode) {
    va_list pArgs;
    va_start(pArgs, pzFormat);
    StoreMessage(pzFormat, pArgs);
    va_end(pArgs);
}

TXZkToolsSQLITE::TXZkToolsSQLITE(TXZkToolsSQLITE const &) = default;
TXZkToolsSQLITE::TXZkToolsSQLITE(TXZkToolsSQLITE &&) = default;
TXZkToolsSQLITE::~TXZkToolsSQLITE() = default;
TXZkToolsSQLITE & TXZkToolsSQLITE::operator=(TXZkToolsSQLITE const &) = default;
TXZkToolsSQLITE & TXZkToolsSQLITE::operator=(TXZkToolsSQLITE &&) = default;

TXZkToolsSQLITE_CONSTRAINT::TXZkToolsSQLITE_CONSTRAINT(int iCode, wchar_t const * pzFormat, ...)
    : TXError(pzModuleTag, iCode) {
    va_list pArgs;
    va_start(pArgs, pzFormat);
    StoreMessage(pzFormat, pArgs);
    va_end(pArgs);
}

TXZkToolsSQLITE_CONSTRAINT::TXZkToolsSQLITE_CONSTRAINT(TXZkToolsSQLITE_CONSTRAINT const &) = default;
TXZkToolsSQLITE_CONSTRAINT::TXZkToolsSQLITE_CONSTRAINT(TXZkToolsSQLITE_CONSTRAINT &&) = default;
TXZkToolsSQLITE_CONSTRAINT::~TXZkToolsSQLITE_CONSTRAINT() = default;
TXZkToolsSQLITE_CONSTRAINT & TXZkToolsSQLITE_CONSTRAINT::operator=(TXZkToolsSQLITE_CONSTRAINT const &) = default;
TXZkToolsSQLITE_CONSTRAINT & TXZkToolsSQLITE_CONSTRAINT::operator=(TXZkToolsSQLITE_CONSTRAINT &&) = default;

TXLockOperation::TXLockOperation(std::deque<TSCMError> const & tErrors) : TXError(pzModuleTag, -1) {
    std::wstring sText = string_functions::sLoadString(hGetMessageModule(), IDS_LOCK_OPERATION_FAILED);
    for (TSCMError const & tError : tErrors) {
        sText += L"\r\n";
        sText += tError.sMessage;
    }
    StoreMessage(sText.c_str(), nullptr);
}

TXLockOperation::TXLockOperation(TXLockOperation const &) = default;
TXLockOperation::TXLockOperation(TXLockOperation &&) = default;
TXLockOperation::~TXLockOperation() = default;
TXLockOperation & TXLockOperation::operator=(TXLockOperation const &) = default;
TXLockOperation & TXLockOperation::operator=(TXLockOperation &&) = default;
