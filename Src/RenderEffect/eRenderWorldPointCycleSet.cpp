#include "eRenderWorldPointCycleSet.h"
#include "eDataSetFrame.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderObject.h"
#include <cstring>

namespace KYR
{

namespace
{
// The vertex record: longitude, latitude (radians), birth (floats); corner x, corner y,
// size, kind (bytes); colour; world position high and low (three floats each).
int const kCornerOffset = 12;
int const kRecordBytes = 44;
unsigned int const kWorldVertexType = 901;
} // namespace

eRenderWorldPointCycleSet::eRenderWorldPointCycleSet()
{
    m_strProgram = "WorldPointCycleSet";
}

eRenderWorldPointCycleSet::~eRenderWorldPointCycleSet() {}

eRenderable::Type eRenderWorldPointCycleSet::GetType()
{
    return eRT_WORLD_POINT_CYCLE_SET;
}

unsigned char eRenderWorldPointCycleSet::Create(eCamera* camera, double, eCanvas* canvas)
{
    m_pCamera = camera;
    m_pCanvas = canvas;
    eVector4T<double> anchor(m_vPosition, 1.0);
    m_vWorldPosition = PositionToWorld(m_nSpatialRefType, anchor);
    return 1;
}

unsigned char eRenderWorldPointCycleSet::UpdateProgram(eRenderEngine*, eRenderSystem*,
                                                       eCamera* camera, eRenderProgram* program)
{
    if (!program)
        return 0;
    program->GetProgram()->UniformMatrix4(program->GetUniform()->m_nWorldMatrix, 1, 0,
                                          m_LocalMatrix.Ptr());
    eDataSetFrame::SetReferenceCentre(camera, program);
    return 1;
}

unsigned char eRenderWorldPointCycleSet::AddCyclePoint(eCyclePoint* point)
{
    if (!point)
        return 1;
    if (!m_pVertexData || !m_pLifeData)
        CreateVertexBuffer();
    eVector4T<double> world = PositionToWorld(point->m_nSpatialRefType, point->m_Position);
    ePoint2D geo = PositionToGeo(point->m_nSpatialRefType, point->m_Position);
    eVector3T<float> high, low;
    DoubleToTwoFloat(eVector3T<double>(world.x, world.y, world.z), high, low);
    float head[3] = {(float)(geo.x * eMathEngine::DEG_TO_RAD),
                     (float)(geo.y * eMathEngine::DEG_TO_RAD), (float)point->m_Position.w};
    // The span as it stands now, added in double.
    float death = (float)(m_fTraceTime + point->m_Position.w);
    unsigned char record[kRecordBytes];
    std::memcpy(record, head, sizeof(head));
    record[14] = (unsigned char)(int)point->m_fSize;
    record[15] = point->m_nType;
    std::memcpy(record + 16, &point->m_Color, 4);
    std::memcpy(record + 20, &high, sizeof(high));
    std::memcpy(record + 32, &low, sizeof(low));
    AddCorners(record, kCornerOffset, death);
    return 1;
}

void eRenderWorldPointCycleSet::DoubleToTwoFloat(double value, float& high, float& low)
{
    eRenderObject::DoubleToTwoFloat(value, high, low);
}

void eRenderWorldPointCycleSet::DoubleToTwoFloat(eVector3T<double> const& value,
                                                 eVector3T<float>& high, eVector3T<float>& low)
{
    eRenderObject::DoubleToTwoFloat(value, high, low);
}

void eRenderWorldPointCycleSet::CreateVertexBuffer()
{
    if (!m_pVertexData)
    {
        eVertexData* data = new eVertexData();
        data->SetVertexType(kWorldVertexType);
        data->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
        data->AddElement(eVET_BYTE, eVEC_4, eAI_TEXCOORD0, 0);
        data->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
        data->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD1, 0);
        data->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD2, 0);
        m_pVertexData.Reset(data);
    }
    CreateLifeData();
}

} // namespace KYR
