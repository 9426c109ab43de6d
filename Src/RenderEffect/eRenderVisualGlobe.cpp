#include "eRenderVisualGlobe.h"
#include "GLut.h"
#include "ePicture.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMatrix4.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <cmath>
#include <vector>

namespace KYR
{

namespace
{

unsigned int const kQueueGroup = 2;
unsigned int const kVertexType = 131;
// The picture's height step is the third byte of each 24-bit pixel.
int const kHeightChannel = 2;
// Bytes of one vertex: position, texture coordinate, normal, all floats.
int const kFloatsPerVertex = 8;
// Normals shorter than this have no direction worth keeping (collapsed polar triangles).
double const kShortestNormal = 1e-13;

struct eVertex
{
    float position[3];
    float texcoord[2];
    float normal[3];
};
static_assert(sizeof(eVertex) == kFloatsPerVertex * sizeof(float), "vertex layout");

eVertex* VertexAt(eVertexData* data, int i)
{
    return reinterpret_cast<eVertex*>(data->GetVertex(i));
}

// The upper-left 3 x 3 of a column-major 4 x 4 matrix, column-major.
void UpperLeft3(eMatrix4T<float> const& m, float out[9])
{
    for (int c = 0; c < 3; ++c)
        for (int r = 0; r < 3; ++r)
            out[c * 3 + r] = m.At(r, c);
}

} // namespace

eRenderVisualGlobe::eRenderVisualGlobe() : m_bInitialized(0) {}

// Technique, textures and buffers go with their last holder.
eRenderVisualGlobe::~eRenderVisualGlobe() {}

eRenderable::Type eRenderVisualGlobe::GetType()
{
    return eRT_VISUAL_GLOBE;
}

eString eRenderVisualGlobe::HeightBumpPath()
{
    return eSystem::GetWorkPath() + "Resources/Weather/wgs84heightbump.jpg";
}

unsigned char eRenderVisualGlobe::Create(eCamera* camera, double, eCanvas* canvas)
{
    // The sphere is the same in every scene mode and coordinate system.
    if (canvas)
        (void)canvas->GetCoordSys();
    if (camera)
        (void)camera->GetSceneMode();
    return 1;
}

unsigned char eRenderVisualGlobe::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    // The colour and the heights come from the same picture.
    m_pTexture.Reset(LoadTexture(HeightBumpPath()));
    m_pHeightTexture.Reset(LoadTexture(HeightBumpPath()));
    CreateGlobeBuffers();
    m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderVisualGlobe::UnInitialize(eRenderEngine*)
{
    m_pTexture.Reset();
    m_pHeightTexture.Reset();
    DestroyGlobeBuffers();
    m_bInitialized = 0;
    return 1;
}

eTexture* eRenderVisualGlobe::LoadTexture(eString const& path)
{
    eImageData* image = ePicture::Load(path, 32);
    if (!image)
        return nullptr;
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(0);
    texture->SetImageData(image);
    texture->CreateTexture();
    // The pixels are on the card now; the texture forgets them so that it never reads them
    // again after they are gone.
    texture->SetImageData(nullptr);
    delete image;
    return texture;
}

void eRenderVisualGlobe::CreateGlobeBuffers()
{
    eVertexData* vertices = new eVertexData();
    vertices->SetVertexType(kVertexType);
    vertices->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    vertices->AddElement(eVET_FLOAT, eVEC_2, eAI_TEXCOORD0, 0);
    vertices->AddElement(eVET_FLOAT, eVEC_3, eAI_ATTRIB1, 0);
    vertices->SetVertexSize(kVertexCount);
    m_pVertexData.Reset(vertices);

    // Without the picture every height is 0 and the sphere is still whole.
    eImageData* heights = ePicture::Load(HeightBumpPath(), 24);
    WriteVertices(heights);
    delete heights;

    m_pIndexData.Reset(new eIndexExData());
    WriteIndices();
    ComputeVertexNormals();

    m_pVertexData->Create();
    m_pIndexData->Create();
    std::vector<unsigned char>().swap(m_pVertexData->GetVertexBuffer());
    std::vector<unsigned int>().swap(m_pIndexData->GetIndexExBuffer());
}

// Rows run from the north pole down, columns from -180 to +180 degrees; the first and last
// columns are separate vertices on the same meridian.
void eRenderVisualGlobe::WriteVertices(eImageData const* heights)
{
    bool const usable = heights && heights->m_pData && heights->m_nWidth > 0 &&
                        heights->m_nHeight > 0 && heights->m_nBitsPerPixel == 24;
    size_t const bytes = usable ? (size_t)heights->m_nPitch * (size_t)heights->m_nHeight : 0;
    double const toNormal = 1.0 / kSphereRadius; // 1.5075823098482665e-07
    for (int r = 0; r < kRows; ++r)
        for (int c = 0; c < kColumns; ++c)
        {
            double lat = 90.0 - r * kCellDegrees;
            double lon = c * kCellDegrees - 180.0;
            eVector3T<double> p = eMathEngine::SphericalToCartesian(
                lon * eMathEngine::DEG_TO_RAD, lat * eMathEngine::DEG_TO_RAD, kSphereRadius);
            double u = c / (double)(kColumns - 1), v = r / (double)(kRows - 1);
            double h = 0.0;
            if (usable)
            {
                long x = std::lround((heights->m_nWidth - 1) * u);
                long y = std::lround((heights->m_nHeight - 1) * v);
                size_t at =
                    ((size_t)y * (size_t)heights->m_nWidth + (size_t)x) * 3 + kHeightChannel;
                if (at < bytes)
                    h = heights->m_pData[at] * kHeightStep;
            }
            // The height goes onto each of the three components alike, not along the radius.
            eVector3T<double> position(p.x + h, p.y + h, p.z + h);
            eVertex* out = VertexAt(m_pVertexData, r * kColumns + c);
            out->position[0] = (float)position.x;
            out->position[1] = (float)position.y;
            out->position[2] = (float)position.z;
            out->texcoord[0] = (float)u;
            out->texcoord[1] = (float)v;
            out->normal[0] = (float)(position.x * toNormal);
            out->normal[1] = (float)(position.y * toNormal);
            out->normal[2] = (float)(position.z * toNormal);
        }
}

void eRenderVisualGlobe::WriteIndices()
{
    std::vector<unsigned int>& indices = m_pIndexData->GetIndexExBuffer();
    indices.resize(kIndexCount);
    unsigned int* out = indices.data();
    for (int r = 0; r < kRows - 1; ++r)
        for (int c = 0; c < kColumns - 1; ++c)
        {
            unsigned int a = (unsigned int)(r * kColumns + c), b = a + 1;
            unsigned int d = a + kColumns, e = d + 1;
            for (unsigned int i : {b, a, e, a, d, e})
                *out++ = i;
        }
}

// Each triangle adds its area-weighted face normal to its corners. The sums start from the
// radial vectors written with the positions, which keeps a direction at the poles, where the
// triangles collapse.
void eRenderVisualGlobe::ComputeVertexNormals()
{
    if (!m_pVertexData || !m_pIndexData)
        return;
    std::vector<unsigned int> const& indices = m_pIndexData->GetIndexExBuffer();
    int const count = m_pVertexData->GetVertexSize();
    for (size_t t = 0; t + 2 < indices.size(); t += 3)
    {
        int const i[3] = {(int)indices[t], (int)indices[t + 1], (int)indices[t + 2]};
        if (i[0] >= count || i[1] >= count || i[2] >= count)
            continue;
        eVector3T<double> p[3];
        for (int k = 0; k < 3; ++k)
        {
            float const* q = VertexAt(m_pVertexData, i[k])->position;
            p[k] = eVector3T<double>(q[0], q[1], q[2]);
        }
        eVector3T<double> n = (p[0] - p[1]).Cross(p[1] - p[2]);
        for (int k = 0; k < 3; ++k)
        {
            float* s = VertexAt(m_pVertexData, i[k])->normal;
            s[0] = (float)(s[0] + n.x);
            s[1] = (float)(s[1] + n.y);
            s[2] = (float)(s[2] + n.z);
        }
    }
    for (int v = 0; v < count; ++v)
    {
        float* s = VertexAt(m_pVertexData, v)->normal;
        double length = std::sqrt((double)s[0] * s[0] + (double)s[1] * s[1] + (double)s[2] * s[2]);
        if (length < kShortestNormal)
            continue;
        for (int k = 0; k < 3; ++k)
            s[k] = (float)(s[k] / length);
    }
}

void eRenderVisualGlobe::DestroyGlobeBuffers()
{
    m_pVertexData.Reset();
    m_pIndexData.Reset();
}

void eRenderVisualGlobe::CreateGlobeTechnique()
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram("VisualGlobe");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(1);
    pass->SetDepthBiasSlopeScale(0.0f);
    pass->SetDepthBiasConstant(0.0f);
    pass->SetLightingEnabled(1);
    pass->SetAmbient(eVector4T<float>(0.3f, 0.3f, 0.3f, 1.0f));
    pass->SetDiffuse(eVector4T<float>(0.6f, 0.6f, 0.6f, 1.0f));
    pass->SetSpecular(eVector4T<float>(0.3f, 0.3f, 0.3f, 1.0f));
    pass->SetShininess(10.0f);
    m_pTechnique.Reset(technique);
}

unsigned char eRenderVisualGlobe::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                    eRenderQueue* queue)
{
    if (!m_pTechnique)
        CreateGlobeTechnique();
    if (queue)
        queue->GetQueueGroup(kQueueGroup)->AddSolidTextureRenderable(m_pTechnique, this);
    return 1;
}

unsigned char eRenderVisualGlobe::Render(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                         eViewport*)
{
    if (!m_bInitialized)
        Initialize(engine);
    if (m_bVisible)
        RenderVertexBuffer(engine, rs, camera);
    return 1;
}

unsigned char eRenderVisualGlobe::UpdateProgram(eRenderEngine*, eRenderSystem*, eCamera* camera,
                                                eRenderProgram* program)
{
    if (!camera || !program || !program->GetProgram())
        return 1;
    eVector3T<double> const& centre = camera->GetReferenceCenter();
    eMatrix4T<float> w =
        eMatrix4T<float>::Translation((float)-centre.x, (float)-centre.y, (float)-centre.z);
    program->GetProgram()->UniformMatrix4(program->GetUniform()->m_nWorldMatrix, 1, 0, w.Ptr());
    return 1;
}

unsigned char eRenderVisualGlobe::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem*,
                                                     eCamera* camera)
{
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* rp = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    eHardwareVertexBuffer* vb = m_pVertexData ? m_pVertexData->GetHardwareBuffer() : nullptr;
    eHardwareIndexBuffer* ib = m_pIndexData ? m_pIndexData->GetHardwareBuffer() : nullptr;
    if (!camera || !rp || !rp->GetProgram() || !vb || !ib)
        return 1;

    eVector3T<double> const& centre = camera->GetReferenceCenter();
    eMatrix4T<float> world =
        eMatrix4T<float>::Translation((float)-centre.x, (float)-centre.y, (float)-centre.z) *
        camera->GetRelativeWorldMatrix();
    float normalMatrix[9];
    UpperLeft3(world.Inverse().Transpose(), normalMatrix);
    eVector3T<double> sun = camera->GetWorldMatrix().TransformPoint(engine->GetSunPosition());
    sun.Normalize();

    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    p->UniformMatrix3(u->m_nNormalMatrix, 1, 0, normalMatrix);
    p->Uniform3f(u->m_nCustom[eR_SUN_DIRECTION], (float)sun.x, (float)sun.y, (float)sun.z);
    p->UniformVector4(u->m_nDiffuse, &pass->GetDiffuse().x);
    p->UniformVector4(u->m_nSpecular, &pass->GetSpecular().x);
    p->Uniform1f(u->m_nShininess, pass->GetShininess());

    GLut::ActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, m_pTexture ? m_pTexture->GetTextureID() : 0);
    GLut::ActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, m_pHeightTexture ? m_pHeightTexture->GetTextureID() : 0);

    // The attributes are pointed at the buffer and switched on only for this draw.
    int const stride = m_pVertexData->GetVertexStride();
    GLut::BindBuffer(GL_ARRAY_BUFFER, vb->GetBufferID());
    for (eVertexElement const& e : m_pVertexData->GetVertexElements())
    {
        GLut::VertexAttribPointer((unsigned int)e.m_eIndex, e.m_nCount, (unsigned int)e.m_eType,
                                  e.m_bNormalized, stride,
                                  reinterpret_cast<void const*>((size_t)e.m_nOffset));
        GLut::EnableVertexAttribArray((unsigned int)e.m_eIndex);
    }
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, ib->GetBufferID());
    glDrawElements(GL_TRIANGLES, m_pIndexData->GetIndexSize(), GL_UNSIGNED_INT, nullptr);
    for (eVertexElement const& e : m_pVertexData->GetVertexElements())
        GLut::DisableVertexAttribArray((unsigned int)e.m_eIndex);
    GLut::BindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    GLut::BindBuffer(GL_ARRAY_BUFFER, 0);

    glBindTexture(GL_TEXTURE_2D, 0); // unit 2
    GLut::ActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, 0);
    return 1;
}

} // namespace KYR
