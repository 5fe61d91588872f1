/// Dates: `TStructTm`, the calendar form, `TZkDateTime`, the instant form, and their texts, for files and for the user.
///
/// Nothing here knows a time zone: a value is a reading of a wall clock, and it is never shifted on its way in or out.
/// `sGetLocalTimeOfUTCTime` alone converts. Years run from 1601 to 30827.
#pragma once

#include "ZkBase/Windows.h"
#include "ZkTools/Export.h"

#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

class TIStream;
class TOptionElement;
class TStreamBase;

/// Which parts of a date are printed.
enum EDateTime : int {
    edtDate = 1,
    edtTime = 2,
    edtDateTime = 3,
};

[[nodiscard]] constexpr EDateTime operator|(EDateTime eFirst, EDateTime eSecond) noexcept {
    return static_cast<EDateTime>(static_cast<int>(eFirst) | static_cast<int>(eSecond));
}

/// How a date looks to the user. A value outside the enumeration counts as `edfShort`.
enum EDateFormat : int {
    edfShort = 0,        ///< the user's short date
    edfLong = 1,         ///< the user's long date
    edfCompact = 2,      ///< "yyyyMMdd"
    edfIso = 3,          ///< "yyyy-MM-dd"
    edfCompactMonth = 4, ///< "yyyyMM"
    edfIsoMonth = 5,     ///< "yyyy-MM"
    edfCustom = 6,       ///< the caller's picture, in the language of `GetDateFormatW`
};

/// How a time looks to the user. A value outside the enumeration counts as `etfDefault`.
enum ETimeFormat : int {
    etfDefault = 0,          ///< the user's time format
    etfNoSeconds = 1,        ///< the same without seconds
    etfHoursOnly = 2,        ///< the same without minutes and seconds
    etfCompact = 3,          ///< "HHmmss"
    etfCompactNoSeconds = 4, ///< "HHmm"
    etfCompactHours = 5,     ///< "HH"
    etfIso = 6,              ///< "HH:mm:ss"
    etfIsoNoSeconds = 7,     ///< "HH:mm"
    etfCustom = 8,           ///< the caller's picture, in the language of `GetTimeFormatW`
};

/// The fields of a `tm` as those of a SYSTEMTIME, each cut to 16 bits. The milliseconds are 0; no field is checked.
ZKTOOLS_API void TmToSystemTime(tm const & tTime, SYSTEMTIME & tResult) noexcept;
/// The inverse. Milliseconds are dropped, `tm_yday` and `tm_isdst` are 0.
ZKTOOLS_API void SystemTimeToTm(SYSTEMTIME const & tTime, tm & tResult) noexcept;

/// A `tm` that compares and persists. `tm_yday` and `tm_isdst` are never computed: conversions leave them 0.
///
/// All fields are 0 at first, which is no calendar date: there is no day 0.
struct ZKTOOLS_API TStructTm : tm {
    TStructTm() noexcept : tm{} {}
    TStructTm(tm const & tTime) noexcept : tm(tTime) {}
    /// As `SystemTimeToTm`.
    TStructTm(SYSTEMTIME const & tTime) noexcept;
    TStructTm & operator=(tm const & tTime) noexcept;
    /// As `SystemTimeToTm`.
    TStructTm & operator=(SYSTEMTIME const & tTime) noexcept;

    /// As `SystemTimeToTm`.
    void Set(SYSTEMTIME const & tTime) noexcept;
    /// As `TmToSystemTime`.
    void Get(SYSTEMTIME & tTime) const noexcept;

    /// Year to second agree. `tm_wday`, `tm_yday` and `tm_isdst` are not looked at, here and in the order.
    [[nodiscard]] bool operator==(TStructTm const & tOther) const noexcept;
    /// By year, month, day, hour, minute, second.
    [[nodiscard]] bool operator<(TStructTm const & tOther) const noexcept;
    [[nodiscard]] bool operator>(TStructTm const & tOther) const noexcept;

    /// Reads nine 16-bit integers with their signs, in the order of the fields.
    /// \throws as the stream does at its end; the fields read so far stay changed
    void Read(TStreamBase & tStream);
    /// Writes nine 16-bit integers, 18 bytes: of each field the low half.
    void Write(TStreamBase & tStream) const;

    /// Reads nine 32-bit integers, in the order of the fields. *A stream that ends too early is no failure*: what it
    /// lacks stays as it was.
    /// \throws TXZkTools with the system's text when the platform's `Read` fails; the fields read so far stay changed
    void Read(TIStream & tStream);
    /// Writes nine 32-bit integers, 36 bytes.
    /// \throws TXZkTools with the system's text when the platform's `Write` fails
    void Write(TIStream & tStream) const;

    /// Reads the text of the element (`TZkDateTime`). One that is no date gives 1601-01-01 00:00:00.
    void Read(TOptionElement const & tElement);
    /// Writes the text "2024-01-15T08:30:00". Fields that are no date, such as those of a new object, are written as
    /// 1601-01-01T00:00:00.
    void Write(TOptionElement & tElement) const;
};

/// A moment on a wall clock, in ticks of 100 ns since 1601-01-01 00:00:00: the scale and the layout of a FILETIME.
///
/// **Zero** is no date. Every conversion that fails gives it, and it prints as the empty text for the user (but as
/// 1601-01-01T00:00:00 in the fixed form, of which it is the first moment).
///
/// **The fixed text** is "2024-01-15T08:30:00", with ".5" behind it for five ticks: the digits behind the point are a
/// plain count of ticks, not a decimal fraction. Reading is tolerant:
///
/// - A `T`, upper case, separates date and time; a time may be empty, or hours, or hours and minutes, or have seconds
///   and, behind a point or a comma, ticks. What lacks is 0.
/// - A field is read like `_wtoi` does: white space and a sign may stand in front, and what follows the digits is not
///   looked at. So a zone behind the time, or behind a date without a time, is passed over, and "2024-1-5" is a date.
/// - Fields are cut to 16 bits; then the date has to exist. A date needs all three fields, and a time needs a date.
///
/// Ticks of 2 to the 63 and above, which can only come from a FILETIME, have no date: they convert to zero fields.
class ZKTOOLS_API TZkDateTime {
public:
    /// Units of spans and comparisons.
    enum EDatePart : int {
        edpWeek = 0, ///< from Monday to Sunday
        edpDay = 1,
        edpHour = 2,
        edpMinute = 3,
        edpSecond = 4,
        edpMillisecond = 5,
        edpTick = 6, ///< 100 ns
    };

    TZkDateTime() noexcept = default;
    /// Zero where there is no such date or time. `tm_wday`, `tm_yday` and `tm_isdst` are not looked at.
    TZkDateTime(tm const & tTime) noexcept;
    /// The same ticks.
    TZkDateTime(FILETIME const & tTime) noexcept;
    /// Zero where there is no such date or time. `wDayOfWeek` is not looked at.
    TZkDateTime(SYSTEMTIME const & tTime) noexcept;
    /// Reads the fixed text; zero where it is none.
    explicit TZkDateTime(std::wstring_view sText);
    /// Zero, whatever the count of seconds.
    explicit TZkDateTime(__int64 const & iSeconds) noexcept;

    /// Where date and time stand in a text; an absent one is nothing. With a `T`, both are there, even if empty.
    /// Otherwise a text with a hyphen is a date, one with a colon a time, and any other is neither.
    [[nodiscard]] static std::pair<std::optional<std::wstring_view>, std::optional<std::wstring_view>>
    splitDateTime(std::wstring_view sText) noexcept;

    /// Reads the fixed text.
    /// \throws TXZkTools with "Invalid dateTime string" and the text
    [[nodiscard]] static TZkDateTime xCreate(std::wstring_view sText);
    /// The same for a date and perhaps a time that were split before.
    [[nodiscard]] static TZkDateTime xCreate(std::pair<std::wstring_view, std::optional<std::wstring_view>> sParts);
    /// Reads the fixed text; nothing where `xCreate` throws.
    [[nodiscard]] static std::optional<TZkDateTime> create(std::wstring_view sText);
    /// The same for a date and perhaps a time that were split before.
    [[nodiscard]] static std::optional<TZkDateTime>
    create(std::pair<std::wstring_view, std::optional<std::wstring_view>> sParts);

    /// How many whole units since 1601-01-01.
    [[nodiscard]] unsigned __int64 iGetTimeInUnit(EDatePart ePart) const noexcept;
    /// How many borders between units lie between the other one and this one, which is not how long: a second across
    /// midnight is one day, 23 hours within a day are none. Negative when this is the earlier one.
    [[nodiscard]] __int64 iGetTimeSpan(EDatePart ePart, TZkDateTime const & tOther) const noexcept;
    /// The sign of that span: -1, 0 or 1.
    [[nodiscard]] int iCompare(TZkDateTime const & tOther, EDatePart ePart) const noexcept;
    [[nodiscard]] static int iCompare(TZkDateTime const & tFirst, TZkDateTime const & tSecond,
                                      EDatePart ePart) noexcept;

    /// With the day of the week; `tm_yday` and `tm_isdst` are 0.
    operator tm() const noexcept;
    operator FILETIME() const noexcept;
    operator SYSTEMTIME() const noexcept;

    /// The fixed text.
    /// \param fFraction with the ticks into the second, where there are any
    [[nodiscard]] std::wstring sGetString(EDateTime eParts, bool fFraction) const;

    /// The text for the user, in the user's locale; empty for zero. Between date and time stands a blank, and a "T"
    /// where the date format is `edfCompact` or `edfIso`. A part that the system refuses, as for a bad picture, is
    /// empty.
    /// \param pzDatePicture for `edfCustom`; null is the user's short date
    /// \param pzTimePicture for `etfCustom`; null is the user's time format
    [[nodiscard]] std::wstring sGetViewString(EDateTime eParts, EDateFormat eDateFormat, wchar_t const * pzDatePicture,
                                              ETimeFormat eTimeFormat, wchar_t const * pzTimePicture) const;
    /// The date for the user.
    [[nodiscard]] std::wstring sGetViewDateString(EDateFormat eFormat, wchar_t const * pzPicture) const;
    /// The time for the user.
    [[nodiscard]] std::wstring sGetViewTimeString(ETimeFormat eFormat, wchar_t const * pzPicture) const;

    [[nodiscard]] bool fIsZero() const noexcept { return uiTicks == 0; }

private:
    unsigned __int64 uiTicks = 0;
};

/// The date for the user; empty where there is none such.
[[nodiscard]] ZKTOOLS_API std::wstring sFormatDate(tm const & tTime, EDateFormat eFormat, wchar_t const * pzPicture);
/// The time for the user; empty where there is no such date or time.
[[nodiscard]] ZKTOOLS_API std::wstring sFormatTime(tm const & tTime, ETimeFormat eFormat, wchar_t const * pzPicture);
/// Today, by the local clock.
[[nodiscard]] ZKTOOLS_API std::wstring sFormatCurrentDate(EDateFormat eFormat, wchar_t const * pzPicture);
/// Now, by the local clock.
[[nodiscard]] ZKTOOLS_API std::wstring sFormatCurrentTime(ETimeFormat eFormat, wchar_t const * pzPicture);

/// The short date of a locale; empty where the system refuses, and where it takes more than 49 characters.
[[nodiscard]] ZKTOOLS_API std::wstring sFormatDate(unsigned long lcid, SYSTEMTIME tTime);
/// The time of a locale; empty where the system refuses, and where it takes more than 49 characters.
[[nodiscard]] ZKTOOLS_API std::wstring sFormatTime(unsigned long lcid, SYSTEMTIME tTime);
/// The two, joined by a blank.
[[nodiscard]] ZKTOOLS_API std::wstring sFormatDateTime(unsigned long lcid, SYSTEMTIME tTime);

/// Year, month and day in decimal, joined by hyphens, without zeros in front: "2024-1-5".
[[nodiscard]] ZKTOOLS_API std::wstring sGetDate(tm const & tTime);
/// Reads such a text, with zeros or without. Every field ends at the next hyphen, and an empty one is 0; nothing is
/// checked. All fields of the result are 0 when the text has less than two hyphens; all but the three are 0 in any
/// case.
[[nodiscard]] ZKTOOLS_API tm tGetDate(std::wstring const & sText);

/// The fixed text of the local time, in the zone of this machine, at a moment in UTC given as fixed text. A text that
/// is none counts as the zero value, and ticks into the second are dropped.
[[nodiscard]] ZKTOOLS_API std::wstring sGetLocalTimeOfUTCTime(std::wstring const & sText);
