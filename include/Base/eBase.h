// Free helpers of the Basic library: assertions, tolerant comparison, packed colours.
#pragma once

// The 64-bit integer of the host's interface. A macro rather than a typedef, so that
// "unsigned __int64" works as it does with the Microsoft compiler. A functional cast
// such as __int64(x) does not; write (__int64)x.
#if !defined(_MSC_VER) && !defined(__int64)
#define __int64 long long
#endif

namespace KYR
{

// Reports a broken expectation (expression, file, line) and returns; the caller goes on. The
// report is printed on stderr and handed to the installed handler, if any; a null expression
// or file reads "(null)".
void Eassert(char const* expression, char const* file, unsigned int line);

// Receives each report of Eassert, on the thread that made it. A host installs one to keep
// its own record of the reports; the value types keep none.
typedef void (*eAssertHandler)(char const* expression, char const* file, unsigned int line);
// Installs handler (null for none) and returns the one it replaces. Safe from any thread.
eAssertHandler SetAssertHandler(eAssertHandler handler);

// Equality within the host's tolerance (1e-10, relative for large values).
unsigned char Eequal(double a, double b);

// Packed colour: red in the low byte, then green, blue, alpha.
inline unsigned int ERGBA(unsigned char r, unsigned char g, unsigned char b, unsigned char a)
{
    return (unsigned int)r | ((unsigned int)g << 8) | ((unsigned int)b << 16) |
           ((unsigned int)a << 24);
}
inline unsigned char EREDVAL(int c)
{
    return (unsigned char)(c & 0xFF);
}
inline unsigned char EGREENVAL(int c)
{
    return (unsigned char)((c >> 8) & 0xFF);
}
inline unsigned char EBLUEVAL(int c)
{
    return (unsigned char)((c >> 16) & 0xFF);
}
inline unsigned char EALPHAVAL(int c)
{
    return (unsigned char)(((unsigned int)c >> 24) & 0xFF);
}

} // namespace KYR

#define EASSERT(expr)                                                                              \
    do                                                                                             \
    {                                                                                              \
        if (!(expr))                                                                               \
            ::KYR::Eassert(#expr, __FILE__, __LINE__);                                             \
    } while (0)
