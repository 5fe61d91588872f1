#include "streams/CodePageTable.h"

#include "ZkBase/Windows.h"

#include <memory>

namespace {

/// The unit that the bytes of one character give, or 0 when they are refused, give more than one, or 0xFFFF.
wchar_t cConvert(unsigned short uCodePage, char const * pBytes, int iCount) noexcept {
    std::array<wchar_t, 6> acUnits{};
    int const iUnits = MultiByteToWideChar(uCodePage, MB_ERR_INVALID_CHARS, pBytes, iCount, acUnits.data(),
                                           static_cast<int>(acUnits.size()));
    return iUnits == 1 && acUnits[0] != 0xFFFF ? acUnits[0] : L'\0';
}

} // namespace

/// The tables made so far: a list that only grows.
class TCodePageTables {
public:
    ~TCodePageTables() {
        for (TCodePageTable const * p = pFirst.load(); p != nullptr;) {
            std::unique_ptr<TCodePageTable const> const pDone(p);
            p = p->pNext;
        }
    }

    TCodePageTable const & tGet(unsigned short uCodePage) {
        TCodePageTable const * pHead = pFirst.load(std::memory_order_acquire);
        if (TCodePageTable const * pFound = pFind(pHead, uCodePage); pFound != nullptr) return *pFound;

        auto pNew = std::make_unique<TCodePageTable>(uCodePage);
        do {
            if (TCodePageTable const * pFound = pFind(pHead, uCodePage); pFound != nullptr) return *pFound;
            pNew->pNext = pHead;
        } while (!pFirst.compare_exchange_weak(pHead, pNew.get(), std::memory_order_acq_rel));
        return *pNew.release();
    }

private:
    static TCodePageTable const * pFind(TCodePageTable const * p, unsigned short uCodePage) noexcept {
        while (p != nullptr && p->uCodePage != uCodePage)
            p = p->pNext;
        return p;
    }

    std::atomic<TCodePageTable const *> pFirst = nullptr;
};

TCodePageTable const & TCodePageTable::tGet(unsigned short uCodePage) {
    static TCodePageTables tTables;
    return tTables.tGet(uCodePage);
}

TCodePageTable::TCodePageTable(unsigned short uCodePage_) : uCodePage(uCodePage_) {
    for (unsigned int u = 1; u < acSingle.size(); ++u) {
        // Whether a byte leads a pair does not depend on the byte behind it, as long as that is no zero.
        char const acBytes[] = {static_cast<char>(u), 'A', '\0'};
        afLead[u] = CharNextExA(uCodePage, acBytes, 0) - acBytes != 1;
        if (!afLead[u]) acSingle[u] = cConvert(uCodePage, acBytes, 1);
        if (u < 0x80 && acSingle[u] != u) fAscii = false;
        if (afLead[u] || (u >= 0x80 && acSingle[u] != 0 && acSingle[u] < 0x80)) fByteByByte = false;
    }
}

TCodePageTable::~TCodePageTable() {
    for (auto const & pRow : apRows)
        std::unique_ptr<TRow const> const pDone(pRow.load());
}

TCodePageTable::TRow const * TCodePageTable::pMakeRow(unsigned char uLead) const {
    auto pNew = std::make_unique<TRow>();
    for (unsigned int u = 1; u < pNew->size(); ++u) {
        char const acPair[] = {static_cast<char>(uLead), static_cast<char>(u)};
        (*pNew)[u] = cConvert(uCodePage, acPair, 2);
    }
    TRow const * pExpected = nullptr; // another thread may have been faster
    if (!apRows[uLead].compare_exchange_strong(pExpected, pNew.get(), std::memory_order_acq_rel)) return pExpected;
    return pNew.release();
}
