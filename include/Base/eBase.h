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

// Reports a broken expectation (expression, file, line) and returns; the caller goes on.
void Eassert(char const* expression, char const* file, unsigned int line);

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
