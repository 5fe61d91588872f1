/// Archives in ZIP form, made by hand, byte by byte.
#pragma once

#include "ZkBase/Windows.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>
#include <wincrypt.h>

namespace zk_test {

/// The CRC-32 of an archive's members.
[[nodiscard]] inline std::uint32_t uChecksum(std::string_view sBytes) {
    std::uint32_t uSum = 0xFFFFFFFF;
    for (char const c : sBytes) {
        uSum ^= static_cast<unsigned char>(c);
        for (int i = 0; i < 8; ++i)
            uSum = uSum >> 1 ^ ((uSum & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~uSum;
}

/// A member, and how it lies in the archive.
struct TArchiveMember {
    std::string sName;
    std::string sBytes{};
    unsigned uMethod = 0; ///< 0 stored; 8 deflated, in one block that is stored
    unsigned uFlags = 0;  ///< 0x800 for a name in UTF-8
    std::uint32_t uDosTime = 0x58210000;
    bool fDescriptor = false; ///< checksum and sizes stand behind the bytes, not in front
    bool fZip64 = false;      ///< sizes and place stand in an extra field of 64 bits each
    std::string sComment{};
};

/// How the archive as a whole is made.
struct TArchiveForm {
    std::string sComment{};
    bool fZip64End = false; ///< with the end record of 64 bits and its locator
    std::string sPrefix{};  ///< in front of all, not counted in by the archive's offsets
};

/// Appends a number, little-endian.
inline void PutNumber(std::string & sOut, std::uint64_t uNumber, int iBytes) {
    for (int i = 0; i < iBytes; ++i)
        sOut += static_cast<char>(uNumber >> 8 * i & 0xFF);
}

/// The fields that a member's two headers share, from the version needed to the length of the extra field.
inline void PutMemberFields(std::string & sOut, TArchiveMember const & tMember, std::size_t uPacked,
                            std::size_t uExtraSize, bool fSumsFollow) {
    bool const fNoSizes = fSumsFollow && tMember.fDescriptor;
    PutNumber(sOut, tMember.fZip64 ? 45 : 20, 2);
    PutNumber(sOut, tMember.uFlags | (tMember.fDescriptor ? 8U : 0U), 2);
    PutNumber(sOut, tMember.uMethod, 2);
    PutNumber(sOut, tMember.uDosTime, 4);
    PutNumber(sOut, fNoSizes ? 0 : uChecksum(tMember.sBytes), 4);
    PutNumber(sOut, tMember.fZip64 ? 0xFFFFFFFF : fNoSizes ? 0 : uPacked, 4);
    PutNumber(sOut, tMember.fZip64 ? 0xFFFFFFFF : fNoSizes ? 0 : tMember.sBytes.size(), 4);
    PutNumber(sOut, tMember.sName.size(), 2);
    PutNumber(sOut, uExtraSize, 2);
}

/// The extra field with the sizes, and in the directory the place, as numbers of 64 bits.
[[nodiscard]] inline std::string sZip64Extra(TArchiveMember const & tMember, std::size_t uPacked,
                                             std::size_t const * puPlace) {
    std::string sExtra;
    if (!tMember.fZip64) return sExtra;
    PutNumber(sExtra, 1, 2);
    PutNumber(sExtra, puPlace != nullptr ? 24 : 16, 2);
    PutNumber(sExtra, tMember.sBytes.size(), 8);
    PutNumber(sExtra, uPacked, 8);
    if (puPlace != nullptr) PutNumber(sExtra, *puPlace, 8);
    return sExtra;
}

/// The bytes of an archive.
[[nodiscard]] inline std::string sMakeArchive(std::vector<TArchiveMember> const & tMembers,
                                              TArchiveForm const & tForm = {}) {
    std::string sOut;
    std::string sDirectory;
    for (TArchiveMember const & tMember : tMembers) {
        std::string sPacked;
        if (tMember.uMethod == 8) {
            sPacked += '\1'; // the last block, and stored
            PutNumber(sPacked, tMember.sBytes.size(), 2);
            PutNumber(sPacked, ~tMember.sBytes.size(), 2);
        }
        sPacked += tMember.sBytes;

        std::size_t const uPlace = sOut.size();
        std::string sExtra = sZip64Extra(tMember, sPacked.size(), nullptr);
        PutNumber(sOut, 0x04034B50, 4);
        PutMemberFields(sOut, tMember, sPacked.size(), sExtra.size(), true);
        sOut += tMember.sName + sExtra + sPacked;
        if (tMember.fDescriptor) {
            PutNumber(sOut, 0x08074B50, 4);
            PutNumber(sOut, uChecksum(tMember.sBytes), 4);
            PutNumber(sOut, sPacked.size(), tMember.fZip64 ? 8 : 4);
            PutNumber(sOut, tMember.sBytes.size(), tMember.fZip64 ? 8 : 4);
        }

        sExtra = sZip64Extra(tMember, sPacked.size(), &uPlace);
        PutNumber(sDirectory, 0x02014B50, 4);
        PutNumber(sDirectory, 20, 2);
        PutMemberFields(sDirectory, tMember, sPacked.size(), sExtra.size(), false);
        PutNumber(sDirectory, tMember.sComment.size(), 2);
        PutNumber(sDirectory, 0, 8); // disk, attributes
        PutNumber(sDirectory, tMember.fZip64 ? 0xFFFFFFFF : uPlace, 4);
        sDirectory += tMember.sName + sExtra + tMember.sComment;
    }
    std::size_t const uDirectory = sOut.size();
    sOut += sDirectory;
    if (tForm.fZip64End) {
        std::size_t const uEnd = sOut.size();
        PutNumber(sOut, 0x06064B50, 4);
        PutNumber(sOut, 44, 8);
        PutNumber(sOut, 45, 2);
        PutNumber(sOut, 45, 2);
        PutNumber(sOut, 0, 8); // disks
        PutNumber(sOut, tMembers.size(), 8);
        PutNumber(sOut, tMembers.size(), 8);
        PutNumber(sOut, sDirectory.size(), 8);
        PutNumber(sOut, uDirectory, 8);
        PutNumber(sOut, 0x07064B50, 4);
        PutNumber(sOut, 0, 4);
        PutNumber(sOut, uEnd, 8);
        PutNumber(sOut, 1, 4);
    }
    PutNumber(sOut, 0x06054B50, 4);
    PutNumber(sOut, 0, 4); // disks
    PutNumber(sOut, tForm.fZip64End ? 0xFFFF : tMembers.size(), 2);
    PutNumber(sOut, tForm.fZip64End ? 0xFFFF : tMembers.size(), 2);
    PutNumber(sOut, tForm.fZip64End ? 0xFFFFFFFF : sDirectory.size(), 4);
    PutNumber(sOut, tForm.fZip64End ? 0xFFFFFFFF : uDirectory, 4);
    PutNumber(sOut, tForm.sComment.size(), 2);
    return tForm.sPrefix + sOut + tForm.sComment;
}

/// What the hash of an archive with these members has to be, made the plain way.
[[nodiscard]] inline std::wstring sContentsHash(std::vector<TArchiveMember> tMembers) {
    std::ranges::sort(tMembers, [](TArchiveMember const & tLeft, TArchiveMember const & tRight) {
        return std::ranges::lexicographical_compare(tLeft.sName, tRight.sName, [](char cLeft, char cRight) {
            return static_cast<unsigned char>(cLeft) < static_cast<unsigned char>(cRight);
        });
    });
    std::string sBlock;
    for (TArchiveMember const & tMember : tMembers) {
        sBlock += tMember.sName;
        PutNumber(sBlock, uChecksum(tMember.sBytes), 4);
        PutNumber(sBlock, tMember.sBytes.size(), 4);
    }
    HCRYPTPROV hProvider = 0;
    HCRYPTHASH hHash = 0;
    std::array<std::uint32_t, 5> uDigest{};
    DWORD dwSize = sizeof uDigest;
    CryptAcquireContextW(&hProvider, nullptr, nullptr, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT);
    CryptCreateHash(hProvider, CALG_SHA1, 0, 0, &hHash);
    CryptHashData(hHash, reinterpret_cast<BYTE const *>(sBlock.data()), static_cast<DWORD>(sBlock.size()), 0);
    CryptGetHashParam(hHash, HP_HASHVAL, reinterpret_cast<BYTE *>(uDigest.data()), &dwSize, 0);
    CryptDestroyHash(hHash);
    CryptReleaseContext(hProvider, 0);
    std::array<wchar_t, 33> acDigits{};
    _snwprintf(acDigits.data(), acDigits.size(), L"%08lX%08lX%08lX%08lX", static_cast<unsigned long>(uDigest[0]),
               static_cast<unsigned long>(uDigest[1]), static_cast<unsigned long>(uDigest[2]),
               static_cast<unsigned long>(uDigest[3]));
    return acDigits.data();
}

} // namespace zk_test
