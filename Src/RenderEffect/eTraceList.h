// A path handed to a list line trace set: timed positions of one moving object, filled by
// the application (on any thread) and then given to the set, which owns it from then on
// and recycles it for later paths.
#pragma once
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eTraceList
{
public:
    eTraceList();
    eTraceList(eTraceList const& other);
    eTraceList& operator=(eTraceList const& other);
    virtual ~eTraceList();

    int GetSpatialRefType() const { return m_nSpatialRefType; }
    void SetSpatialRefType(int kind) { m_nSpatialRefType = kind; }
    std::vector<eVector4T<double>>& GetPositions() { return m_arPositions; }
    void SetPositions(std::vector<eVector4T<double>> const& positions)
    {
        m_arPositions = positions;
    }

protected:
    int m_nSpatialRefType;                        // coordinate kind of the positions
    std::vector<eVector4T<double>> m_arPositions; // x, y, z and the time in w, rising time
};

} // namespace KYR
