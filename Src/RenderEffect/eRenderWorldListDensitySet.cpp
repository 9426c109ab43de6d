#include "eRenderWorldListDensitySet.h"
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
// The vertex record: longitude, latitude (radians), time (floats); corner x, corner y,
// size, kind (bytes); colour; world position high and low (three floats each).
int const kRecordBytes = 44;
int const kCornerOffset = 12;
unsigned int const kWorldVertexType = 901;
} // namespace

eRenderWorldListDensitySet::eRenderWorldListDensitySet()
{
    m_strProgram = "WorldDensitySetPoint";
}

eRenderWorldListDensitySet::~eRenderWorldListDensitySet() {}

eRenderable::Type eRenderWorldListDensitySet::GetType()
{
    return eRT_WORLD_LIST_DENSITY_SET;
}

unsigned char eRenderWorldListDensitySet::Create(eCamera* camera, double, eCanvas* canvas)
{
    m_pCamera = camera;
    m_pCanvas = canvas;
    m_vWorldPosition = eVector4T<double>(m_vPosition, 1.0);
    return 1;
}

unsigned char eRenderWorldListDensitySet::UpdateProgram(eRenderEngine*, eRenderSystem*,
                                                        eCamera* camera, eRenderProgram* program)
{
    if (!program)
        return 0;
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, m_LocalMatrix.Ptr());
    p->Uniform1f(u->m_nCustom[eDataSetFrame::eR_OPACITY], m_fTransparent);
    eDataSetFrame::SetReferenceCentre(camera, program);
    return 1;
}

void eRenderWorldListDensitySet::SetGeometryShader(unsigned char on)
{
    eRenderListDensitySet::SetGeometryShader(on);
    m_strProgram = on ? "GeometryWorldDensitySetPoint" : "WorldDensitySetPoint";
}

eVertexData* eRenderWorldListDensitySet::CreateVertexBuffer()
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(kWorldVertexType);
    data->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    data->AddElement(eVET_BYTE, eVEC_4, eAI_TEXCOORD0, 0);
    data->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    data->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD1, 0);
    data->AddElement(eVET_FLOAT, eVEC_3, eAI_TEXCOORD2, 0);
    return data;
}

unsigned char eRenderWorldListDensitySet::UpdateVertexBuffer(int, eDensityPoint* point)
{
    eVector4T<double> world = PositionToWorld(point->m_nSpatialRefType, point->m_Position);
    ePoint2D geo = PositionToGeo(point->m_nSpatialRefType, point->m_Position);
    eVector3T<float> high, low;
    DoubleToTwoFloat(eVector3T<double>(world.x, world.y, world.z), high, low);
    float head[3] = {(float)(geo.x * eMathEngine::DEG_TO_RAD),
                     (float)(geo.y * eMathEngine::DEG_TO_RAD), (float)point->m_Position.w};
    unsigned char record[kRecordBytes];
    std::memcpy(record, head, sizeof(head));
    record[14] = (unsigned char)(int)point->m_fSize;
    record[15] = point->m_nType;
    std::memcpy(record + 16, &point->m_Color, 4);
    std::memcpy(record + 20, &high, sizeof(high));
    std::memcpy(record + 32, &low, sizeof(low));
    PutCorners(record, kRecordBytes, kCornerOffset);
    return 1;
}

void eRenderWorldListDensitySet::DoubleToTwoFloat(double value, float& high, float& low)
{
    eRenderObject::DoubleToTwoFloat(value, high, low);
}

void eRenderWorldListDensitySet::DoubleToTwoFloat(eVector3T<double> const& value,
                                                  eVector3T<float>& high, eVector3T<float>& low)
{
    eRenderObject::DoubleToTwoFloat(value, high, low);
}

} // namespace KYR
