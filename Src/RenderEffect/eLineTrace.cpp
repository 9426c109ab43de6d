#include "eLineTrace.h"

namespace KYR
{

eLineTrace::eLineTrace() : m_pTraceList(nullptr), m_nIndex(-1), m_nFirstIndex(0), m_nWindowCount(0)
{
}

eLineTrace::eLineTrace(int index, eTraceList* list)
    : m_pTraceList(list), m_nIndex(index), m_nFirstIndex(0), m_nWindowCount(0)
{
}

} // namespace KYR
