#include "eGrowShape.h"

namespace KYR
{

eGrowShape::eGrowShape()
    : m_bValid(1), m_cColor(0, 0, 0, 0), m_nFirstVertex(0), m_nVertexCount(0), m_nFirstIndex(0),
      m_nIndexCount(0)
{
}

} // namespace KYR
