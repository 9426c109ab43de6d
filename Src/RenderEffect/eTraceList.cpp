#include "eTraceList.h"

namespace KYR
{

eTraceList::eTraceList() : m_nSpatialRefType(1) {}

eTraceList::eTraceList(eTraceList const& other)
    : m_nSpatialRefType(other.m_nSpatialRefType), m_arPositions(other.m_arPositions)
{
}

eTraceList& eTraceList::operator=(eTraceList const& other)
{
    m_nSpatialRefType = other.m_nSpatialRefType;
    m_arPositions = other.m_arPositions;
    return *this;
}

eTraceList::~eTraceList() {}

} // namespace KYR
