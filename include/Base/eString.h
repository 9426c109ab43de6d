// Eight-bit text string of the Basic library.
#pragma once
#include <cstdarg>
#include <cstddef>
#include <string>

namespace KYR
{

class eString
{
public:
    eString() {}
    eString(char const* s) : m_str(s ? s : "") {}
    eString(std::string const& s) : m_str(s) {}
    eString(eString const&) = default;
    eString(eString&&) = default;
    eString& operator=(eString const&) = default;
    eString& operator=(eString&&) = default;
    eString& operator=(char const* s)
    {
        m_str = s ? s : "";
        return *this;
    }

    eString operator+(char const* s) const { return eString(m_str + (s ? s : "")); }
    eString operator+(eString const& s) const { return eString(m_str + s.m_str); }
    eString& operator+=(char const* s)
    {
        m_str += (s ? s : "");
        return *this;
    }
    eString& operator+=(eString const& s)
    {
        m_str += s.m_str;
        return *this;
    }

    bool operator==(char const* s) const { return m_str == (s ? s : ""); }
    bool operator!=(char const* s) const { return !(*this == s); }
    bool operator==(eString const& s) const { return m_str == s.m_str; }
    bool operator!=(eString const& s) const { return m_str != s.m_str; }
    bool operator<(eString const& s) const { return m_str < s.m_str; }

    char const* Cstr() const { return m_str.c_str(); }
    operator char const*() const { return m_str.c_str(); }
    int GetLength() const { return (int)m_str.size(); }
    // The character at i, or 0 outside the string.
    char GetAt(int i) const { return (i >= 0 && i < GetLength()) ? m_str[(size_t)i] : '\0'; }
    unsigned char IsEmpty() const { return m_str.empty() ? 1 : 0; }
    void Empty() { m_str.clear(); }
    std::string const& Str() const { return m_str; }

    // printf-style formatting; replaces the content.
    void Format(char const* fmt, ...)
#if defined(__GNUC__)
        __attribute__((format(printf, 2, 3)))
#endif
        ;

private:
    std::string m_str;
};

inline eString operator+(char const* a, eString const& b)
{
    return eString(a) + b;
}

} // namespace KYR
