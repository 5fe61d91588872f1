#include "ZkBase/Paths.h"
#include "ZkTools/Locks.h"
#include "ZkTools/MessageIds.h"
#include "ZkTools/Paths.h"

#include <utility>

namespace {

constexpr std::array<unsigned int, 7> uiFileErrorIds{
    IDS_FILE_LOCK_FAILED,         // eErrLock
    IDS_FILE_LOCK_WRITER_KNOWN,   // eErrWriterKnown
    IDS_LOCK_REFUSED,             // eErrReadOnly
    IDS_FILE_LOCK_WRITER_UNKNOWN, // eErrWriterUnknown
    IDS_FILE_LOCK_OPEN_FAILED,    // eErrOpen
    IDS_FILE_LOCK_IN_USE,         // eErrInUse
    IDS_FILE_LOCK_READERS_KNOWN,  // eErrReadersKnown
};

/// The path with a text put in front of its extension.
std::wstring sExtendName(std::wstring const & sPath, std::wstring const & sMore) {
    TSplitPath const tSplit = SplitPath(sPath, eBackshlashRemove);
    return sMerge(tSplit.sDirectory, tSplit.sName + sMore, tSplit.sExtension);
}

} // namespace

TLockFile::TLockFile(EMode eMode_) : TLockDirectory(eMode_) {
    FillErrorStringIds();
}

TLockFile::TLockFile(EMode eMode_, wchar_t const * pzDirectory, wchar_t const * pzFileName)
    : TLockDirectory(eMode_, pzDirectory, pzFileName) {
    TLockFile::SetDir(pzDirectory, pzFileName);
    FillErrorStringIds();
}

TLockFile::TLockFile(TLockFile const &) = default;
TLockFile & TLockFile::operator=(TLockFile const &) = default;

// Deliberate: the base can only be copied, so that a moved lock shares its handles with its source as a copy does.
TLockFile::TLockFile(TLockFile && tOther) : TLockDirectory(tOther), sFileName(std::move(tOther.sFileName)) {}

TLockFile & TLockFile::operator=(TLockFile && tOther) {
    TLockDirectory::operator=(tOther);
    sFileName = std::move(tOther.sFileName);
    return *this;
}

TLockFile::~TLockFile() = default;

void TLockFile::SetDir(wchar_t const * pzDirectory, wchar_t const * pzFileName) {
    TLockDirectory::SetDir(pzDirectory, pzFileName);
    sFileName = pzFileName;
    sWriterInfoPath = sExtendName(sWriterInfoPath, sFileName);
    sWriterPath = sExtendName(sWriterPath, L"%" + sFileName);
    // Deliberate: no separator between the two. Nothing reads the pattern.
    sWriterInfoPattern = pzDirectory + (L"write*" + sFileName) + L".tmp";
}

std::wstring TLockFile::sGetPathOfObjectToLock() const {
    return path_func::sPathAppend(sDirectory, sFileName);
}

wchar_t const * TLockFile::pzGetNameOfObjectToLock() {
    return sFileName.c_str();
}

void TLockFile::FillErrorStringIds() noexcept {
    uiErrorIds = uiFileErrorIds;
}
