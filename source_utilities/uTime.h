#pragma once

#include <ctime>

namespace ZU_WEP {

/// One snapshot of the local time, shared by every instance and every thread without a lock: threads that use it at
/// once may mix their fields. Instances hold nothing, and the comparisons find all of them equal.
class uTime {
  public:
    uTime() {}
    uTime(const uTime&) {}
    uTime& operator=(const uTime&) { return *this; }
    virtual ~uTime();

    bool operator==(const uTime&) const { return true; }
    bool operator!=(const uTime&) const { return false; }
    bool operator<(const uTime&) const { return false; }
    bool operator>(const uTime&) const { return false; }
    bool operator<=(const uTime&) const { return true; }
    bool operator>=(const uTime&) const { return true; }

    /// Takes the snapshot, to the second: within one it stays, so that a changed time zone is noticed in the next. The
    /// date stays as it was when the system can't convert it.
    static void GetLocal();
    /// How many there were: as long as this is the same, so is what FormatTime makes of one format.
    static unsigned long GetNumSnapshots() { return m_snapshots; }

    static int GetYear() { return m_year; }
    /// 0 to 11.
    static int GetMonth() { return m_month; }
    static int GetDay() { return m_day; }
    static int GetHour() { return m_hour; }
    static int GetMinute() { return m_minute; }
    static int GetSecond() { return m_second; }
    static int GetMilliSecond() { return m_milli; }

    /// Writes the snapshot by the `strftime` format `format`, where "%s" stands for the milliseconds in three digits
    /// and "%#s" for the bare number; "%m" prints one less than the month's number. Returns `buffer`, empty when the
    /// text does not fit; null for a null argument, a `size` below 1 or a snapshot that can't be used.
    char* FormatTime(char* buffer, int size, const char* format) const;

    /// Replaces `from` by `to` in a buffer of `size` bytes. Returns how often; 0, and nothing changed, where the text
    /// would not fit any more.
    static int ReplaceString(char* text, int size, const char* from, const char* to);
    /// Where `sub` is in `text` at or behind `start`, or -1.
    static int FindSubString(const char* text, const char* sub, int start);

  protected:
    static void ConvertTime(std::tm& out);

    static int m_year;
    static int m_month;
    static int m_day;
    static int m_hour;
    static int m_minute;
    static int m_second;
    static int m_wday;
    static int m_yday;
    static int m_milli;
    /// 0 valid, 1 invalid, 2 unusable.
    static int m_status;
    static std::time_t m_taken;
    static unsigned long m_snapshots;
};

}  // namespace ZU_WEP
