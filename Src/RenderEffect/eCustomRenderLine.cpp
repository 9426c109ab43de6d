#include "eCustomRenderLine.h"
#include "GLut.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <numeric>

namespace KYR
{

namespace
{
// Vertex type tag of the 16-byte line vertex.
unsigned int const kLineVertexType = 1;
// A list longer than this is indexed with 32-bit indices.
size_t const kMaxShortIndexVertices = 65536;
} // namespace

eCustomRenderLine::eCustomRenderLine()
    : m_bNewLine(1), m_fLineWidth(1.0f), m_fRelativeHeight(0.0f), m_cColor(255, 0, 0, 255),
      m_bUseTexture(0), m_eOperationType(eOT_LINE_STRIP)
{
    eMaterial* material = new eMaterial();
    material->SetName("myLineMaterial");
    ePass* pass = material->CreateTechnique()->CreatePass();
    pass->SetProjectionMode(ePM_PERSPECTIVE);
    pass->SetProgram("CustomRenderLine");
    pass->SetLineWidth(3.0f);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(0);
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDiffuse(eVector4T<float>(1.0f, 0.0f, 0.0f, 1.0f));
    HoldMaterial(material);
}

eCustomRenderLine::eCustomRenderLine(eCustomRenderLine const& other) : eRenderObject(other)
{
    ShareFrom(other);
}

eCustomRenderLine& eCustomRenderLine::operator=(eCustomRenderLine const& other)
{
    if (this == &other)
        return *this;
    eRenderObject::operator=(other);
    ShareFrom(other);
    return *this;
}

eCustomRenderLine::~eCustomRenderLine() {}

void eCustomRenderLine::ShareFrom(eCustomRenderLine const& other)
{
    m_arLines = other.m_arLines;
    m_bNewLine = other.m_bNewLine;
    m_fLineWidth = other.m_fLineWidth;
    m_fRelativeHeight = other.m_fRelativeHeight;
    m_cColor = other.m_cColor;
    m_pTexture = other.m_pTexture;
    m_bUseTexture = other.m_bUseTexture;
    m_eOperationType = other.m_eOperationType;
    m_spColorImage = other.m_spColorImage;
}

void eCustomRenderLine::HoldMesh(eMesh* mesh)
{
    m_arMeshes.push_back(eShared<eMesh>(mesh));
}

void eCustomRenderLine::AddMesh(eMesh* mesh)
{
    HoldMesh(mesh);
}

void eCustomRenderLine::DestroyMeshes()
{
    m_arMeshes.clear();
}

void eCustomRenderLine::HoldMaterial(eMaterial* material)
{
    m_pMaterial.Reset(material);
}

ePass* eCustomRenderLine::GetPass()
{
    eTechnique* technique = m_pMaterial ? m_pMaterial->GetBestTechnique() : nullptr;
    return technique ? technique->GetPass(0) : nullptr;
}

eRenderable::Type eCustomRenderLine::GetType()
{
    return eRT_LINE;
}

void eCustomRenderLine::AddVertex(tagColorVertex3r& vertex)
{
    // After ClearVertex there is no list to append to, whatever the flag says.
    if (m_bNewLine || m_arLines.empty())
    {
        m_arLines.emplace_back();
        m_bNewLine = 0;
    }
    m_arLines.back().push_back(vertex);
}

void eCustomRenderLine::ClearVertex()
{
    for (std::vector<tagColorVertex3r>& line : m_arLines)
        line.clear();
    m_arLines.clear();
}

void eCustomRenderLine::SetLineWidth(float const& width)
{
    m_fLineWidth = width;
    if (ePass* pass = GetPass())
        pass->SetLineWidth(width);
}

void eCustomRenderLine::SetColor(eVector4T<unsigned char> color)
{
    m_cColor = color;
    eImageData* image = new eImageData();
    if (!image->Allocate(1, 1, 32))
    {
        delete image;
        return;
    }
    image->m_pData[0] = color.x;
    image->m_pData[1] = color.y;
    image->m_pData[2] = color.z;
    image->m_pData[3] = color.w;
    m_pTexture.Reset();
    m_spColorImage.Reset(image);
    // The object keeps the picture rather than letting the upload free it, so that the
    // texture comes back after UnInitialize.
    eTexture* texture = new eTexture();
    texture->SetAutoRelease(0);
    texture->SetImageData(image);
    m_pTexture.Reset(texture);
    m_bUseTexture = 1;
}

void eCustomRenderLine::SetColorTable(eString file, int filter)
{
    m_pTexture.Reset(eTextureOperator::GetSingleton().CreateTexture(file, eTWM_CLAMP_TO_EDGE,
                                                                    (eTextureFilterMode)filter));
    m_spColorImage.Reset();
    // Without a table the vertex colours show rather than an empty texture's black.
    m_bUseTexture = m_pTexture ? 1 : 0;
}

unsigned char eCustomRenderLine::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    DestroyMeshes();
    for (std::vector<tagColorVertex3r> const& line : m_arLines)
    {
        // The host draws meshes through their indices, so each list is indexed in order,
        // with 32-bit indices once it is too long for 16-bit ones.
        eMesh* mesh = new eMesh(line.size() > kMaxShortIndexVertices);
        mesh->SetOperationType(m_eOperationType);
        eVertexData* vertices = mesh->GetVertexData();
        vertices->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
        vertices->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
        vertices->SetVertexType(kLineVertexType);
        HoldMesh(mesh);
        if (line.empty())
            continue;
        vertices->AddVertex(reinterpret_cast<unsigned char const*>(line.data()), (int)line.size());
        eIndexData* indices = mesh->GetIndexData();
        if (eIndexExData* wide = dynamic_cast<eIndexExData*>(indices))
        {
            wide->GetIndexExBuffer().resize(line.size());
            std::iota(wide->GetIndexExBuffer().begin(), wide->GetIndexExBuffer().end(), 0u);
        }
        else
        {
            indices->GetIndexBuffer().resize(line.size());
            std::iota(indices->GetIndexBuffer().begin(), indices->GetIndexBuffer().end(),
                      (unsigned short)0);
        }
    }
    m_bInitialized = CreateBuffer();
    if (m_pTexture)
        m_pTexture->CreateTexture();
    return m_bInitialized;
}

unsigned char eCustomRenderLine::UnInitialize(eRenderEngine*)
{
    DestroyBuffer();
    m_bInitialized = 0;
    DestroyMeshes();
    if (m_pTexture)
        m_pTexture->DestroyTexture();
    return 1;
}

unsigned char eCustomRenderLine::Reset()
{
    DestroyBuffer();
    DestroyMeshes();
    m_bInitialized = 0;
    return 1;
}

unsigned char eCustomRenderLine::StartRender(eRenderEngine* engine, eRenderSystem* rs,
                                             eCamera* camera, eViewport* viewport)
{
    if (!eRenderObject::StartRender(engine, rs, camera, viewport))
        return 0;
    eRenderProgram* rp = engine->GetRenderProgram(GetPass());
    if (!rp)
        return 0;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->Uniform1i(u->m_nCustom[eR_PROJ_KIND], m_nProjectionKind);
    p->Uniform1f(u->m_nCustom[eR_RELATIVE_HEIGHT], m_fRelativeHeight);
    p->Uniform1i(u->m_nCustom[eR_USE_TEXTURE], m_bUseTexture);
    if (m_pTexture)
    {
        m_pTexture->CreateTexture();
        GLut::ActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, m_pTexture->GetTextureID());
    }
    return 1;
}

unsigned char eCustomRenderLine::EndRender(eRenderEngine* engine, eRenderSystem* rs,
                                           eCamera* camera, eViewport* viewport)
{
    return eRenderObject::EndRender(engine, rs, camera, viewport);
}

} // namespace KYR
