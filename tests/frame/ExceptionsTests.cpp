#include "ZkTools/Exceptions.h"

#include "ZkTools/DecimalValue.h"
#include "ZkTools/Files.h"
#include "ZkTools/MessageIds.h"
#include "frame/Failures.h"
#include "tests/support/Narrow.h"

#include <gtest/gtest.h>

#include <cstring>
#include <deque>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace {

using zk_test::sNarrow;

std::string sReason(unsigned long dwError) {
    return sNarrow(sGetErrorString(dwError));
}

/// Which handlers of the family catch the exception: a letter for each, in the order of the tests.
template <typename TThrown>
std::string sCaughtBy(TThrown const & tThrown) {
    auto const fCatches = [&]<typename THandler>(std::type_identity<THandler>) {
        try {
            throw TThrown(tThrown);
        } catch (THandler const &) {
            return true;
        } catch (...) {
            return false;
        }
    };
    std::string sResult;
    if (fCatches(std::type_identity<TXZkTools>())) sResult += 'Z';
    if (fCatches(std::type_identity<TXZkToolsSQLITE>())) sResult += 'S';
    if (fCatches(std::type_identity<TXZkToolsSQLITE_CONSTRAINT>())) sResult += 'C';
    if (fCatches(std::type_identity<TXLockOperation>())) sResult += 'L';
    if (fCatches(std::type_identity<TXError>())) sResult += 'E';
    if (fCatches(std::type_identity<std::runtime_error>())) sResult += 'r';
    if (fCatches(std::type_identity<std::exception>())) sResult += 'e';
    return sResult;
}

/// Copies, moves and assigns keep text, number and tag.
template <typename TException>
void ExpectCopiesKeepEverything(TException const & tFirst, TException const & tOther) {
    std::string const sText = tFirst.what();
    auto const ExpectSame = [&](TException const & tCopy) {
        EXPECT_EQ(tCopy.what(), sText);
        EXPECT_EQ(tCopy.iGetNumber(), tFirst.iGetNumber());
        EXPECT_EQ(tCopy.sGetModule(), L"ZKTOOLS");
    };
    TException tCopy(tFirst);
    ExpectSame(tCopy);
    TException tMoved(std::move(tCopy));
    ExpectSame(tMoved);
    TException tAssigned(tOther);
    ASSERT_NE(tAssigned.what(), sText);
    tAssigned = tFirst;
    ExpectSame(tAssigned);
    TException tMoveAssigned(tOther);
    tMoveAssigned = std::move(tMoved);
    ExpectSame(tMoveAssigned);
    tAssigned = static_cast<TException const &>(tAssigned);
    ExpectSame(tAssigned);
}

} // namespace

TEST(TXZkTools, BearsTheMessageIdAndTheModuleTag) {
    TXZkTools const tError(IDS_RENAME_FAILED, L"a", L"b");
    EXPECT_EQ(tError.iGetNumber(), 4230);
    EXPECT_EQ(tError.sGetModule(), L"ZKTOOLS");
    EXPECT_STREQ(tError.what(), "Cannot rename \"a\" to \"b\".");
}

TEST(TXZkTools, BearsMinusOneWhenBuiltFromText) {
    TXZkTools const tError(L"text %s %d %u", L"and", -1, 4'000'000'000u);
    EXPECT_EQ(tError.iGetNumber(), -1);
    EXPECT_EQ(tError.sGetModule(), L"ZKTOOLS");
    EXPECT_STREQ(tError.what(), "text and -1 4000000000");
}

TEST(TXZkTools, TellsTheIdWhenThereIsNoSuchMessage) {
    TXZkTools const tError(9999u, L"a");
    EXPECT_EQ(tError.iGetNumber(), 9999);
    EXPECT_STREQ(tError.what(), "ZKTOOLS 9999");
}

TEST(TXZkTools, AddsFurtherMessagesBehindTheFirst) {
    TXZkTools tError(IDS_APPEND_FILE_FAILED, L"a", L"b");
    tError.AddMessage(IDS_APPEND_FILE_DETAIL, L"c");
    tError.AddMessageStr(L"third %d", 3);
    EXPECT_STREQ(tError.what(), "Cannot join the files \"a\" and \"b\".\r\nCannot open the file \"c\".\r\nthird 3");
    EXPECT_EQ(tError.iGetNumber(), 4292);
}

TEST(TXZkTools, LooksAddedIdsUpInTheLibrarysMessagesThroughTheRootToo) {
    TXZkTools tError(L"first");
    static_cast<TXError &>(tError).AddMessage(IDS_LOCK_REFUSED, L"x");
    EXPECT_STREQ(tError.what(), "first\r\n\"x\" is read-only.");
}

TEST(TXZkTools, KeepsValuesWholeAndLiterally) {
    std::wstring const sLong(100'000, L'x');
    EXPECT_EQ(TXZkTools(IDS_INTERNET_READ_FAILED, sLong.c_str()).what(),
              "Cannot read \"" + std::string(100'000, 'x') + "\".");
    EXPECT_STREQ(TXZkTools(IDS_INTERNET_READ_FAILED, L"100%s%n%d%%").what(), "Cannot read \"100%s%n%d%%\".");
}

TEST(TXZkTools, KeepsTheMessageOfAnotherExceptionWhenOneIsAdded) {
    TXZkTools tError(IDS_INTERNET_READ_FAILED, L"50%s");
    tError.AddMessage(IDS_INTERNET_READ_FAILED, L"%d");
    InsertMessage(tError, nullptr, 1);
    EXPECT_STREQ(tError.what(), "ZKTOOLS 1\r\nCannot read \"50%s\".\r\nCannot read \"%d\".");
}

TEST(TXZkTools, KeepsItsTextWhenSlicedDownToRuntimeError) {
    std::runtime_error tKept("");
    try {
        throw TXZkTools(IDS_LOCK_REFUSED, L"x");
    } catch (TXZkTools const & tError) {
        tKept = tError;
    }
    EXPECT_STREQ(tKept.what(), "\"x\" is read-only.");
}

TEST(TXZkTools, ThrowsWhatWasAddedAfterItsConstruction) {
    TXZkTools tError(L"first");
    tError.AddMessageStr(L"second");
    try {
        throw TXZkTools(tError);
    } catch (std::exception const & tCaught) {
        EXPECT_STREQ(tCaught.what(), "first\r\nsecond");
    }
}

TEST(TXZkToolsSQLITE, BearsTheCallersCode) {
    TXZkToolsSQLITE const tError(19, L"constraint %s", L"c");
    EXPECT_EQ(tError.iGetNumber(), 19);
    EXPECT_EQ(tError.sGetModule(), L"ZKTOOLS");
    EXPECT_STREQ(tError.what(), "constraint c");
    TXZkToolsSQLITE_CONSTRAINT const tConstraint(-5, L"%d", 7);
    EXPECT_EQ(tConstraint.iGetNumber(), -5);
    EXPECT_EQ(tConstraint.sGetModule(), L"ZKTOOLS");
    EXPECT_STREQ(tConstraint.what(), "7");
}

TEST(TXZkToolsSQLITE, DoesNotLookAddedIdsUpInTheLibrarysMessages) {
    TXZkToolsSQLITE tError(1, L"first");
    tError.AddMessage(IDS_LOCK_REFUSED, L"x");
    EXPECT_STREQ(tError.what(), "first\r\nZKTOOLS 4327");
    TXZkToolsSQLITE_CONSTRAINT tConstraint(1, L"first");
    tConstraint.AddMessage(IDS_LOCK_REFUSED, L"x");
    EXPECT_STREQ(tConstraint.what(), "first\r\nZKTOOLS 4327");
    TXLockOperation tLock{std::deque<TSCMError>()};
    tLock.AddMessage(IDS_LOCK_REFUSED, L"x");
    EXPECT_STREQ(tLock.what(), "The lock operation failed.\r\nZKTOOLS 4327");
}

TEST(TXLockOperation, HasTheHeadLineAndALineForEachErrorInOrder) {
    std::deque<TSCMError> const tErrors{{L"b", L"second item"}, {L"a", L"first item"}};
    TXLockOperation const tError(tErrors);
    EXPECT_EQ(tError.iGetNumber(), -1);
    EXPECT_EQ(tError.sGetModule(), L"ZKTOOLS");
    EXPECT_STREQ(tError.what(), "The lock operation failed.\r\nsecond item\r\nfirst item");
}

TEST(TXLockOperation, HasTheHeadLineAloneWithoutErrors) {
    EXPECT_STREQ(TXLockOperation(std::deque<TSCMError>()).what(), "The lock operation failed.");
}

TEST(TXLockOperation, TakesItsTextsAsTheyStand) {
    TXLockOperation const tError(std::deque<TSCMError>{{L"", L"100%s %d%n"}, {L"", L""}, {L"", L"50%"}});
    EXPECT_STREQ(tError.what(), "The lock operation failed.\r\n100%s %d%n\r\n\r\n50%");
}

TEST(Exceptions, AreCaughtByTheirOwnKindAndTheRootsAlone) {
    EXPECT_EQ(sCaughtBy(TXZkTools(L"x")), "ZEre");
    EXPECT_EQ(sCaughtBy(TXZkToolsSQLITE(1, L"x")), "SEre");
    EXPECT_EQ(sCaughtBy(TXZkToolsSQLITE_CONSTRAINT(1, L"x")), "CEre");
    EXPECT_EQ(sCaughtBy(TXLockOperation(std::deque<TSCMError>())), "LEre");
}

TEST(Exceptions, ThrownInTheLibraryAreCaughtByTheirOwnKindHere) {
    try {
        ExistDirectory(L"C:\\no such directory");
        FAIL();
    } catch (TXZkTools const & tError) {
        EXPECT_EQ(typeid(tError), typeid(TXZkTools));
        EXPECT_EQ(tError.iGetNumber(), 4251);
        EXPECT_STREQ(tError.what(), "There is no directory \"C:\\no such directory\".");
    }
    try {
        static_cast<void>(TDecimalValue::make_byte(L"128"));
        FAIL();
    } catch (TXZkTools const & tError) {
        EXPECT_EQ(typeid(tError), typeid(TDecimalValue::TXInvalid));
        EXPECT_EQ(tError.iGetNumber(), 4534);
        EXPECT_STREQ(tError.what(), "\"128\" is not a valid value of the type \"byte\".");
    }
    EXPECT_THROW(static_cast<void>(TDecimalValue::make_byte(L"x")), TDecimalValue::TXInvalid);
    EXPECT_THROW(static_cast<void>(TDecimalValue::make_byte(L"x")), TXError);
    EXPECT_THROW(static_cast<void>(TDecimalValue::make_byte(L"x")), std::runtime_error);
}

TEST(Exceptions, KeepEverythingWhenCopiedMovedAndAssigned) {
    ExpectCopiesKeepEverything(TXZkTools(IDS_LOCK_REFUSED, L"x"), TXZkTools(L"y"));
    ExpectCopiesKeepEverything(TXZkToolsSQLITE(1, L"x"), TXZkToolsSQLITE(2, L"y"));
    ExpectCopiesKeepEverything(TXZkToolsSQLITE_CONSTRAINT(1, L"x"), TXZkToolsSQLITE_CONSTRAINT(2, L"y"));
    std::deque<TSCMError> const tErrors{{L"item", L"text"}};
    ExpectCopiesKeepEverything(TXLockOperation(tErrors), TXLockOperation(std::deque<TSCMError>()));
}

TEST(Exceptions, AddNoFieldsToTheRoot) {
    static_assert(sizeof(TXZkTools) == sizeof(TXError));
    static_assert(sizeof(TXZkToolsSQLITE) == sizeof(TXError));
    static_assert(sizeof(TXZkToolsSQLITE_CONSTRAINT) == sizeof(TXError));
    static_assert(sizeof(TXLockOperation) == sizeof(TXError));
}

TEST(Exceptions, StandDirectlyUnderTheRoot) {
    static_assert(!std::is_base_of_v<TXZkTools, TXZkToolsSQLITE>);
    static_assert(!std::is_base_of_v<TXZkTools, TXZkToolsSQLITE_CONSTRAINT>);
    static_assert(!std::is_base_of_v<TXZkToolsSQLITE, TXZkToolsSQLITE_CONSTRAINT>);
    static_assert(!std::is_base_of_v<TXZkTools, TXLockOperation>);
}

#ifdef __GNUC__
TEST(Exceptions, HaveAddMessageBehindTheDestructorAndWhat) {
    // In this ABI a pointer to a virtual member is its offset in the table plus one; a destructor takes two entries.
    auto const uGetSlot = [](auto pMember) {
        std::size_t uOffset = 0;
        std::memcpy(&uOffset, &pMember, sizeof uOffset);
        return (uOffset - 1) / sizeof(void *);
    };
    EXPECT_EQ(uGetSlot(&TXError::what), 2u);
    EXPECT_EQ(uGetSlot(&TXError::AddMessage), 3u);
    EXPECT_EQ(uGetSlot(&TXZkTools::AddMessage), 3u);
}
#endif

TEST(Failures, TellWhatFailedInFrontOfTheReason) {
    TXZkTools const tError = tFailureWithReason(ERROR_SHARING_VIOLATION, IDS_RENAME_FAILED, L"a%s", L"b%d");
    EXPECT_EQ(tError.iGetNumber(), 4230);
    EXPECT_EQ(tError.what(), "Cannot rename \"a%s\" to \"b%d\".\r\n" + sReason(ERROR_SHARING_VIOLATION));
}

TEST(Failures, TellTheReasonInFrontOfWhatFailed) {
    TXZkTools const tError = tReasonWithFailure(ERROR_SHARING_VIOLATION, IDS_CANNOT_MAKE_DIRECTORY, L"a%s");
    EXPECT_EQ(tError.iGetNumber(), -1);
    EXPECT_EQ(tError.what(), sReason(ERROR_SHARING_VIOLATION) + "\r\nCannot create the directory \"a%s\".");
}

TEST(Failures, TakeAnArgumentThatTheTextDoesNotName) {
    TXZkTools const tError = tReasonWithFailure(ERROR_SEEK, IDS_SEEK_OUT_OF_RANGE, L"name");
    EXPECT_EQ(tError.what(), sReason(ERROR_SEEK) + "\r\nThe position lies outside the possible range.");
}
