#include "ZkTools/Hash.h"

#include "files/ArchiveFile.h"
#include "files/LongPath.h"

#include "ZkBase/Files.h"
#include "ZkTools/Exceptions.h"
#include "ZkTools/FileStream.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>
#include <wincrypt.h>

namespace {

constexpr std::uint32_t uMemberSignature = 0x04034B50; // "PK", 3, 4
constexpr uLong uNameSize = 32767;
constexpr std::size_t uTailSize = 2 * sizeof(std::uint32_t); // checksum and size of a member
constexpr std::size_t uDigestSize = 20;

void Require(bool fDone, char const * pzFailure) {
    if (!fDone) throw std::runtime_error(pzFailure);
}

/// Four words of a hash as 32 digits.
std::wstring sFormat(std::array<std::uint32_t, 4> const & uWords) {
    std::wstring sDigits;
    for (std::uint32_t const uWord : uWords) {
        for (int iShift = 28; iShift >= 0; iShift -= 4)
            sDigits += L"0123456789ABCDEF"[uWord >> iShift & 15];
    }
    return sDigits;
}

/// What is hashed of the members: each as its name, its checksum and its size. One block for all, in the order of the
/// archive, and where each member lies in it.
class TContents {
public:
    void Add(std::string_view sName, std::uint32_t uChecksum, std::uint32_t uSize) {
        tMembers.push_back({sBlock.size(), sName.size()});
        sBlock += sName;
        AddWord(uChecksum);
        AddWord(uSize);
    }

    /// The same block in the order of the names.
    // Members of one name follow one another by their bytes: the order of the archive must not count.
    [[nodiscard]] std::string sGetSorted() {
        std::sort(tMembers.begin(), tMembers.end(), [this](TMember const & tLeft, TMember const & tRight) {
            int const iOrder = sGetName(tLeft).compare(sGetName(tRight));
            return iOrder != 0 ? iOrder < 0 : sGetTail(tLeft) < sGetTail(tRight);
        });
        std::string sSorted;
        sSorted.reserve(sBlock.size());
        for (TMember const & tMember : tMembers)
            sSorted.append(sGetName(tMember)).append(sGetTail(tMember));
        return sSorted;
    }

private:
    struct TMember {
        std::size_t uStart;
        std::size_t uNameLength;
    };

    [[nodiscard]] std::string_view sGetName(TMember const & tMember) const noexcept {
        return std::string_view(sBlock).substr(tMember.uStart, tMember.uNameLength);
    }
    [[nodiscard]] std::string_view sGetTail(TMember const & tMember) const noexcept {
        return std::string_view(sBlock).substr(tMember.uStart + tMember.uNameLength, uTailSize);
    }
    void AddWord(std::uint32_t uWord) {
        for (int iShift = 0; iShift < 32; iShift += 8)
            sBlock += static_cast<char>(uWord >> iShift & 0xFF);
    }

    std::string sBlock;
    std::vector<TMember> tMembers;
};

struct TCloseArchive {
    void operator()(void * pArchive) const noexcept { unzClose(pArchive); }
};

/// Reads the members from the archive's directory. As many records as it promises are read, no matter how many that
/// are: nothing is set aside for them beforehand.
TContents tReadMembers(unzFile pArchive, uLong uCount) {
    TContents tContents;
    std::vector<char> acName(uNameSize);
    for (uLong uMember = 0; uMember < uCount; ++uMember) {
        Require(unzOpenCurrentFile(pArchive) == UNZ_OK, "unzOpenCurrentFile failed");
        unz_file_info tInfo;
        Require(unzGetCurrentFileInfo(pArchive, &tInfo, acName.data(), uNameSize, nullptr, 0, nullptr, 0) == UNZ_OK,
                "unzGetCurrentFileInfo failed");
        // A name that fills the buffer has no zero behind it.
        std::string_view const sStored(acName.data(), std::min(tInfo.size_filename, uNameSize));
        tContents.Add(sStored.substr(0, sStored.find('\0')), tInfo.crc, tInfo.uncompressed_size);
        int const iAnswer = unzGoToNextFile(pArchive);
        if (iAnswer == UNZ_END_OF_LIST_OF_FILE) break;
        // Deliberate: the text names the other step, as it always has.
        Require(iAnswer == UNZ_OK, "unzGoToFirstFile failed");
    }
    return tContents;
}

/// What the hash of an archive is made of.
std::string sReadContents(std::wstring const & sPath) {
    TArchiveFile tFile;
    zlib_filefunc_def tFunctions = tFile.tGetFunctions();
    std::wstring sLong;
    std::unique_ptr<void, TCloseArchive> const pArchive(
        unzOpen2(reinterpret_cast<char const *>(pzLongPath(sPath.c_str(), sLong)), &tFunctions));
    if (pArchive == nullptr && tFile.fIsBareEndRecord()) return {};
    unz_global_info tInfo;
    Require(unzGetGlobalInfo(pArchive.get(), &tInfo) == UNZ_OK, "unzGetGlobalInfo failed");
    if (tInfo.number_entry == 0) return {}; // minizip calls the first one of none a damage
    Require(unzGoToFirstFile(pArchive.get()) == UNZ_OK, "unzGoToFirstFile failed");
    return tReadMembers(pArchive.get(), tInfo.number_entry).sGetSorted();
}

struct TProviderTraits {
    using THandle = HCRYPTPROV;
    static THandle hNone() noexcept { return 0; }
    static bool fClose(THandle h) noexcept { return CryptReleaseContext(h, 0) != 0; }
};

struct THashTraits {
    using THandle = HCRYPTHASH;
    static THandle hNone() noexcept { return 0; }
    static bool fClose(THandle h) noexcept { return CryptDestroyHash(h) != 0; }
};

/// The first four words of the SHA-1 of a block.
std::array<std::uint32_t, 4> uHash(std::string_view sBlock) {
    HCRYPTPROV hNewProvider = 0;
    Require(CryptAcquireContextW(&hNewProvider, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT) != 0,
            "CryptAcquireContext failed");
    HandleWrapers::HandleT<TProviderTraits> const hProvider(hNewProvider);
    HCRYPTHASH hNewHash = 0;
    // Deliberate: the text names the other step, as it always has.
    Require(CryptCreateHash(hProvider.hGet(), CALG_SHA1, 0, 0, &hNewHash) != 0, "CryptAcquireContext failed");
    HandleWrapers::HandleT<THashTraits> const hHash(hNewHash);
    // The directory of an archive of less than 4 GiB is longer than this block.
    Require(CryptHashData(hHash.hGet(), reinterpret_cast<BYTE const *>(sBlock.data()),
                          static_cast<DWORD>(sBlock.size()), 0) != 0,
            "CryptHashData failed");
    std::array<BYTE, uDigestSize> acDigest{};
    DWORD dwSize = uDigestSize;
    Require(CryptGetHashParam(hHash.hGet(), HP_HASHVAL, acDigest.data(), &dwSize, 0) != 0, "CryptGetHashParam failed");
    std::array<std::uint32_t, 4> uWords;
    std::memcpy(uWords.data(), acDigest.data(), sizeof uWords);
    return uWords;
}

} // namespace

bool fIsZipFile(std::wstring const & sPath) {
    TFileHandle const hFile(CreateFileLong(sPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                           OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::uint32_t uSignature = 0;
    DWORD dwRead = 0;
    return hFile.fIsValid() && ReadFile(hFile.hGet(), &uSignature, sizeof uSignature, &dwRead, nullptr) != 0 &&
           dwRead == sizeof uSignature && uSignature == uMemberSignature;
}

std::wstring sGetZipFileHash(std::wstring const & sPath) {
    return sFormat(uHash(sReadContents(sPath)));
}

std::wstring sMsiGetFileHash(std::wstring const & sPath) {
    MSIFILEHASHINFO tHash{};
    tHash.dwFileHashInfoSize = sizeof tHash;
    if (file_func::MsiGetFileHashW(sPath.c_str(), 0, &tHash) != 0) throw TXZkTools(L"MsiGetFileHash failed");
    return sFormat({tHash.dwData[0], tHash.dwData[1], tHash.dwData[2], tHash.dwData[3]});
}

std::wstring sGetFileHash(std::wstring const & sPath) {
    return fIsZipFile(sPath) ? sGetZipFileHash(sPath) : sMsiGetFileHash(sPath);
}
