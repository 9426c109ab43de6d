#include "eRenderScatterPointSet.h"
#include "ePicture.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eHardwareBuffer.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderQueueVisitor.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>

namespace KYR
{

namespace
{

unsigned int const kTexture0 = 33984; // GL_TEXTURE0
unsigned int const kTexture1 = 33985; // GL_TEXTURE1
int const kVisibleSize = 1024;        // side of the category visibility picture
int const kRecordBytes = 20;

// One point met by the pick ray.
struct eScatterHit
{
    int slot;
    double tangent;
    eScatterPoint point;
    eVector3T<double> world;
    eVector3T<double> camera;
};

// With v = world - origin normalised, c = dir.v and t = |v x dir| / c is the tangent of
// the angle between the ray and the point; a hit has c > 0 and t below the icon's angular
// radius r / d. Neither c's sign nor t depends on the normalisation, so the test runs on
// squares without a root or a division: t < r / d  <=>  |v x dir| d < r c.
bool RayHits(eVector3T<double> const& origin, eVector3T<double> const& dir,
             eVector3T<double> const& world, double radius, double& t)
{
    eVector3T<double> v = world - origin;
    double c = dir.Dot(v);
    // A size of 0 or below meets nothing: the tangent is never negative.
    if (!(c > 0.0) || !(radius > 0.0))
        return false;
    double cross2 = v.Cross(dir).SquaredLength();
    if (!(cross2 * v.SquaredLength() < radius * radius * c * c))
        return false;
    t = std::sqrt(cross2) / c;
    return true;
}

void DeleteTexture(unsigned int name)
{
    glDeleteTextures(1, &name);
}

// A new texture name that its last holder deletes.
eSharedName NewTexture()
{
    unsigned int name = 0;
    glGenTextures(1, &name);
    return eSharedName(name, DeleteTexture);
}

// One technique for every set, made on first use and kept for the whole process.
eTechnique* SharedTechnique()
{
    static eTechnique* s_pTechnique = nullptr;
    if (!s_pTechnique)
    {
        s_pTechnique = new eTechnique();
        ePass* pass = s_pTechnique->CreatePass();
        pass->SetProgram("ScatterPoint");
        pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
        pass->SetDepthCheckEnabled(1);
        pass->SetDepthWriteEnabled(0);
    }
    return s_pTechnique;
}

} // namespace

eRenderScatterPointSet::eRenderScatterPointSet() : eRenderScatterPointSet(32) {}

eRenderScatterPointSet::eRenderScatterPointSet(int gridSize)
    : m_nGridSize(gridSize), m_nPoolSize(1000000), m_nPointCount(0), m_nSpatialRefType(1),
      m_nChoiceType(0), m_bInitialized(0), m_bVisibleDirty(1), m_nReserved(1),
      m_dPointSize(50000.0),
      m_strStylePicture(eSystem::GetWorkPath() + "Resources/Icons/ScatterPoint.png"), m_nIdBytes(4),
      m_nPositionBytes(16), m_pfnHitCallBack(nullptr), m_pHitUserData(nullptr)
{
    long long tiles = (long long)gridSize * gridSize;
    m_arCategoryVisible.assign(gridSize > 0 ? (size_t)tiles : 0, 1);
    eScatterPoint blank(-1, 0.0, 0.0, 0.0, 1.0);
    ConvertByte(blank, m_arBlankRecord);
}

eRenderScatterPointSet::~eRenderScatterPointSet()
{
    ReleaseResources();
}

// Each goes with its last holder: what a copy still draws with stays.
void eRenderScatterPointSet::ReleaseResources()
{
    m_pVertexData.Reset();
    m_pChoiceVertexData.Reset();
    m_nStyleTexture.Reset();
    m_nVisibleTexture.Reset();
    m_pVisiblePixels.Reset();
}

// ---------------------------------------------------------------------------------------------
// Records and buffers
// ---------------------------------------------------------------------------------------------

void eRenderScatterPointSet::ConvertByte(eScatterPoint const& point,
                                         std::vector<unsigned char>& bytes)
{
    float xyzw[4] = {(float)point.x, (float)point.y, (float)point.z, (float)point.w};
    bytes.resize((size_t)(m_nIdBytes + m_nPositionBytes));
    std::memcpy(bytes.data(), &point.id, (size_t)m_nIdBytes);
    std::memcpy(bytes.data() + 4, xyzw, (size_t)m_nPositionBytes);
}

void eRenderScatterPointSet::Unpack(unsigned char const* record, eScatterPoint& point)
{
    float xyzw[4];
    std::memcpy(&point.id, record, 4);
    std::memcpy(xyzw, record + 4, sizeof(xyzw));
    point.x = xyzw[0];
    point.y = xyzw[1];
    point.z = xyzw[2];
    point.w = xyzw[3];
}

eVertexData* eRenderScatterPointSet::NewPointStore()
{
    eVertexData* store = new eVertexData();
    store->SetVertexType(3);
    store->AddElement(eVET_INT, eVEC_1, eAI_ATTRIB1, 0);
    store->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    eHardwareVertexBuffer* buffer = eHardwareBufferManager::GetSingleton().CreateVertexBuffer();
    int stride = store->GetVertexStride();
    buffer->Allocate(35048, 1, (int)std::min<long long>((long long)m_nPoolSize * stride, INT_MAX),
                     nullptr);
    buffer->SetVertexStride(stride);
    store->SetHardwareBuffer(buffer);
    return store;
}

void eRenderScatterPointSet::CreateBuffer()
{
    if (m_pVertexData)
        return;
    m_pVertexData.Reset(NewPointStore());
}

int eRenderScatterPointSet::SlotOffset(eVertexData* store, int slot)
{
    if (!store || !store->GetHardwareBuffer() || slot < 0)
        return -1;
    long long offset = (long long)slot * store->GetVertexStride();
    return offset > INT_MAX ? -1 : (int)offset;
}

void eRenderScatterPointSet::WriteRecord(eVertexData* store, int slot,
                                         std::vector<unsigned char> const& bytes)
{
    int offset = SlotOffset(store, slot);
    // A slot past the allocation (the one the full test lets through) writes nothing.
    if (offset >= 0)
        store->GetHardwareBuffer()->WriteData(offset, (int)bytes.size(), bytes.data());
}

int eRenderScatterPointSet::ReadRecords(int count, std::unique_ptr<unsigned char[]>& bytes)
{
    bytes.reset();
    if (!m_pVertexData || !m_pVertexData->GetHardwareBuffer() || count <= 0)
        return 0;
    eHardwareVertexBuffer* buffer = m_pVertexData->GetHardwareBuffer();
    int stride = m_pVertexData->GetVertexStride();
    count = std::min(count, buffer->GetSizeInBytes() / stride);
    if (count <= 0)
        return 0;
    // Left uninitialised: the read fills every byte.
    bytes.reset(new unsigned char[(size_t)count * stride]);
    return buffer->ReadData(0, count * stride, bytes.get()) ? count : 0;
}

bool eRenderScatterPointSet::GetScatterPoint(int slot, eScatterPoint& point)
{
    if (slot > m_nPointCount || !m_pVertexData)
        return false;
    unsigned char record[kRecordBytes];
    int offset = SlotOffset(m_pVertexData, slot);
    if (offset < 0 || !m_pVertexData->GetHardwareBuffer()->ReadData(offset, kRecordBytes, record))
        return false;
    Unpack(record, point);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Points
// ---------------------------------------------------------------------------------------------

int eRenderScatterPointSet::AddScatterPoint(eScatterPoint& point)
{
    CreateBuffer();
    // Strictly greater: the slot equal to the pool size is still handed out once.
    if (m_nPointCount > m_nPoolSize)
        return -1;
    std::vector<unsigned char> bytes;
    ConvertByte(point, bytes);
    if (!m_arFreeSlots.empty())
    {
        int slot = m_arFreeSlots.front();
        WriteRecord(m_pVertexData, slot, bytes);
        m_arFreeSlots.erase(m_arFreeSlots.begin());
        return slot;
    }
    WriteRecord(m_pVertexData, m_nPointCount, bytes);
    return m_nPointCount++;
}

void eRenderScatterPointSet::UpDateScatterPoint(int slot, eScatterPoint& point)
{
    if (slot > m_nPointCount || !m_pVertexData)
        return;
    std::vector<unsigned char> bytes;
    ConvertByte(point, bytes);
    WriteRecord(m_pVertexData, slot, bytes);
    int type = 0;
    if (m_pChoiceVertexData && GetChoiceScatterPoint(slot, type))
    {
        point.id = type;
        ConvertByte(point, bytes);
        WriteRecord(m_pChoiceVertexData, slot, bytes);
    }
}

void eRenderScatterPointSet::DeleteScatterPoint(int slot)
{
    if (slot > m_nPointCount || !m_pVertexData)
        return;
    WriteRecord(m_pVertexData, slot, m_arBlankRecord);
    if (m_pChoiceVertexData)
        WriteRecord(m_pChoiceVertexData, slot, m_arBlankRecord);
    m_arFreeSlots.push_back(slot);
}

void eRenderScatterPointSet::SetScatterPointIsVisible(int slot, bool visible)
{
    if (slot > m_nPointCount || !m_pVertexData)
        return;
    eScatterPoint point;
    if (!GetScatterPoint(slot, point) || point.w == (double)visible)
        return;
    point.w = visible ? 1.0 : 0.0;
    std::vector<unsigned char> bytes;
    ConvertByte(point, bytes);
    WriteRecord(m_pVertexData, slot, bytes);
    if (!m_pChoiceVertexData)
        return;
    // The overlay is rewritten from the stored selection, whose w dates from selection time.
    for (eChoiceObject const& choice : m_arChoicePoints)
        if (choice.index == slot)
        {
            ConvertByte(choice.point, bytes);
            WriteRecord(m_pChoiceVertexData, slot, bytes);
            break;
        }
}

// ---------------------------------------------------------------------------------------------
// Categories
// ---------------------------------------------------------------------------------------------

void eRenderScatterPointSet::SetScatterVisible(int category, bool visible)
{
    if (category < 0 || category > (int)m_arCategoryVisible.size() - 1)
        return;
    m_arCategoryVisible[(size_t)category] = visible ? 1 : 0;
    m_bVisibleDirty = 1;
}

bool eRenderScatterPointSet::GetScatterVisible(int category)
{
    if (category < 0 || category > (int)m_arCategoryVisible.size() - 1)
        return false;
    return m_arCategoryVisible[(size_t)category] != 0;
}

void eRenderScatterPointSet::ReCreatVisibleTexture()
{
    if (!m_bVisibleDirty)
        return;
    if (!m_pVisiblePixels)
        m_pVisiblePixels.Reset(new float[(size_t)kVisibleSize * kVisibleSize]);
    std::unique_ptr<unsigned char[]> records;
    int available = m_pChoiceVertexData ? ReadRecords(m_nPointCount, records) : 0;
    if (available > 0)
    {
        // A selected point follows the category it really belongs to.
        std::vector<unsigned char> bytes;
        for (std::pair<int, int> const& choice : m_arChoiceIndex)
        {
            if (choice.first < 0 || choice.first >= available)
                continue;
            eScatterPoint point;
            Unpack(&records[(size_t)choice.first * kRecordBytes], point);
            point.w = GetScatterVisible(point.id) ? 1.0 : 0.0;
            point.id = choice.second;
            ConvertByte(point, bytes);
            WriteRecord(m_pChoiceVertexData, choice.first, bytes);
        }
    }
    GLut::ActiveTexture(kTexture1);
    if (!m_nVisibleTexture)
        m_nVisibleTexture = NewTexture();
    // The category array blown up to the picture, so that the atlas coordinate of a tile
    // also addresses its visibility. With a grid that does not divide the size, the far
    // columns repeat the first tile of the next row and the far rows stay hidden.
    int cell = std::max(1, kVisibleSize / std::max(1, m_nGridSize));
    size_t tiles = m_arCategoryVisible.size();
    for (int r = 0; r < kVisibleSize; ++r)
    {
        float* row = m_pVisiblePixels.Get() + (size_t)r * kVisibleSize;
        size_t base = (size_t)(r / cell) * (size_t)std::max(0, m_nGridSize);
        for (int c = 0; c < kVisibleSize; ++c)
        {
            size_t k = (size_t)(c / cell) + base;
            row[c] = k < tiles ? (float)m_arCategoryVisible[k] : 0.0f;
        }
    }
    glBindTexture(GL_TEXTURE_2D, m_nVisibleTexture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, kVisibleSize, kVisibleSize, 0, GL_LUMINANCE,
                 GL_FLOAT, m_pVisiblePixels);
    GLut::ActiveTexture(kTexture0);
    m_bVisibleDirty = 0;
}

// ---------------------------------------------------------------------------------------------
// Selection
// ---------------------------------------------------------------------------------------------

int eRenderScatterPointSet::FindChoiceIndex(int slot)
{
    for (size_t i = 0; i < m_arChoiceIndex.size(); ++i)
        if (m_arChoiceIndex[i].first == slot)
            return (int)i;
    return -1;
}

bool eRenderScatterPointSet::GetChoiceScatterPoint(int slot, int& type)
{
    int i = FindChoiceIndex(slot);
    if (i < 0)
        return false;
    type = m_arChoiceIndex[(size_t)i].second;
    return true;
}

void eRenderScatterPointSet::AddChoiceScatterPoint(int slot, eScatterPoint& point)
{
    if (!m_pChoiceVertexData)
        m_pChoiceVertexData.Reset(NewPointStore());
    if (slot > m_nPointCount)
        return;
    std::vector<unsigned char> bytes;
    ConvertByte(point, bytes);
    WriteRecord(m_pChoiceVertexData, slot, bytes);
}

void eRenderScatterPointSet::SelectSlot(int slot, eScatterPoint point)
{
    point.id = m_nChoiceType;
    m_arChoiceIndex.push_back(std::make_pair(slot, m_nChoiceType));
    AddChoiceScatterPoint(slot, point);
    m_arChoicePoints.push_back(eChoiceObject(slot, point));
}

void eRenderScatterPointSet::SetScatterPointIsChoice(int slot, bool choice)
{
    eScatterPoint point;
    if (!GetScatterPoint(slot, point))
        return;
    int i = FindChoiceIndex(slot);
    if (choice)
    {
        if (i < 0)
            SelectSlot(slot, point);
        return;
    }
    if (i < 0)
        return;
    m_arChoiceIndex.erase(m_arChoiceIndex.begin() + i);
    m_arChoicePoints.erase(m_arChoicePoints.begin() + i);
    DeleteChoicePoint(slot);
}

void eRenderScatterPointSet::DeleteChoicePoint(int slot)
{
    if (slot > m_nPointCount || !m_pChoiceVertexData)
        return;
    // Unlike the blank record of a deleted point, w is 0 here.
    eScatterPoint blank(-1, 0.0, 0.0, 0.0, 0.0);
    std::vector<unsigned char> bytes;
    ConvertByte(blank, bytes);
    WriteRecord(m_pChoiceVertexData, slot, bytes);
}

void eRenderScatterPointSet::DeleteChoiceData()
{
    if (!m_pChoiceVertexData || m_arChoiceIndex.empty())
        return;
    for (std::pair<int, int> const& choice : m_arChoiceIndex)
        WriteRecord(m_pChoiceVertexData, choice.first, m_arBlankRecord);
}

void eRenderScatterPointSet::SetHitCallBackFun(ScatterHitCallBack fn, void* user)
{
    m_pfnHitCallBack = fn;
    m_pHitUserData = user;
}

void eRenderScatterPointSet::SendHitScatterPoint(std::vector<int> slots,
                                                 std::vector<eScatterPoint> points)
{
    if (m_pfnHitCallBack)
        m_pfnHitCallBack(m_pHitUserData, slots, points);
}

void eRenderScatterPointSet::NotifySelection()
{
    if (m_arChoicePoints.empty())
        return;
    std::vector<int> slots;
    std::vector<eScatterPoint> points;
    for (eChoiceObject const& choice : m_arChoicePoints)
    {
        slots.push_back(choice.index);
        points.push_back(choice.point);
    }
    SendHitScatterPoint(slots, points);
}

// ---------------------------------------------------------------------------------------------
// Picking
// ---------------------------------------------------------------------------------------------

unsigned char eRenderScatterPointSet::Query(eRenderEngine* engine, eCamera* camera,
                                            eQueryFilter* filter, double&)
{
    if (!filter)
        return 0;
    if (!filter->m_bKeep)
    {
        DeleteChoiceData();
        m_arChoiceIndex.clear();
        m_arChoicePoints.clear();
    }
    eCoordSys* coordSys = engine ? engine->GetCoordSys() : nullptr;
    if (!m_pVertexData || !camera || !coordSys)
        return 0;
    eSceneMode mode = camera->GetSceneMode();
    eVector3T<double> eye = camera->GetCameraPosition();
    eVector3T<double> const origin = filter->m_vOrigin, dir = filter->m_vDirection;
    std::unique_ptr<unsigned char[]> records;
    size_t count = (size_t)ReadRecords(m_nPointCount, records);
    double const radius = m_dPointSize * 0.5;
    std::vector<eScatterHit> hits;
    for (size_t i = 0; i < count; ++i)
    {
        eScatterPoint p;
        Unpack(&records[i * kRecordBytes], p);
        if (p.id == -1 || p.w < 0.5)
            continue;
        ePoint2D pt(p.x, p.y);
        coordSys->GeoToMap(pt, pt);
        coordSys->MapToLogicalPoint(pt, pt);
        eVector3T<double> world;
        coordSys->LogicalToWorld(mode, pt, world, p.z);
        double t = 0.0;
        if (RayHits(origin, dir, world, radius, t))
            hits.push_back(eScatterHit{(int)i, t, p, world, eye});
    }
    std::sort(hits.begin(), hits.end(),
              [](eScatterHit const& a, eScatterHit const& b)
              { return (a.world - a.camera).Length() < (b.world - b.camera).Length(); });
    if (!hits.empty())
        SelectSlot(hits.front().slot, hits.front().point);
    NotifySelection();
    return hits.empty() ? 0 : 1;
}

// ---------------------------------------------------------------------------------------------
// Frame
// ---------------------------------------------------------------------------------------------

void eRenderScatterPointSet::SetStylePicture(eString& file)
{
    m_strStylePicture = file;
    m_bInitialized = 0;
}

void eRenderScatterPointSet::CreateTexture()
{
    GLut::ActiveTexture(kTexture0);
    eImageData* image = ePicture::Load(m_strStylePicture, 32);
    if (!image)
        return;
    glEnable(GL_TEXTURE_2D);
    if (!m_nStyleTexture)
        m_nStyleTexture = NewTexture();
    glBindTexture(GL_TEXTURE_2D, m_nStyleTexture);
    ePicture::UploadClampedLinear(image);
    delete image; // frees the pixels too
}

unsigned char eRenderScatterPointSet::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return 1;
    CreateTexture();
    if (m_nStyleTexture)
        m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderScatterPointSet::UnInitialize(eRenderEngine*)
{
    // The atlas flag, the free slots and the selection survive on purpose.
    ReleaseResources();
    m_nPointCount = 0;
    return 0;
}

unsigned char eRenderScatterPointSet::Reset(eRenderEngine*)
{
    return 0;
}

unsigned char eRenderScatterPointSet::Update(eRenderEngine*)
{
    return 0;
}

unsigned char eRenderScatterPointSet::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                        eRenderQueue* queue)
{
    queue->GetQueueGroup(8)->AddTransparentRenderable(SharedTechnique(), this);
    return 1;
}

unsigned char eRenderScatterPointSet::Render(eRenderEngine* engine, eRenderSystem* rs,
                                             eCamera* camera, eViewport*)
{
    if (!m_bVisible)
        return 0;
    eSceneMode mode = camera->GetSceneMode();
    eCoordSys* coordSys = engine->GetCoordSys();
    int type = coordSys ? coordSys->GetPrjCoordSys().GetProjection()->GetProjectionType() : 0;
    if (!m_bInitialized)
        Initialize(engine);
    ReCreatVisibleTexture();
    eRenderProgram* rp = engine->GetRenderProgram(eString("ScatterPoint"));
    if (!rp || !rp->GetProgram())
        return 0;
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    p->Use();
    eVector3T<double> const& centre = camera->GetReferenceCenter();
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, camera->GetRelativeWorldMatrix().Ptr());
    p->Uniform1f(u->m_nCustom[0], (float)m_dPointSize);
    p->Uniform4f(u->m_nCustom[1], (float)centre.x, (float)centre.y, (float)centre.z, 0.0f);
    p->Uniform1f(u->m_nCustom[2], 0.0f);
    p->Uniform1i(u->m_nTexture0, 0);
    p->Uniform1i(u->m_nTexture1, 1);
    p->Uniform1f(u->m_nCustom[3], (float)m_nGridSize);
    // Other projections leave the last value in the program.
    if (mode == eSM_GLOBE)
        p->Uniform1f(u->m_nCustom[4], 0.0f);
    else if (type == PJ_PLATE_CARREE)
        p->Uniform1f(u->m_nCustom[4], 1.0f);
    else if (type == PJ_SPHERE_MERCATOR)
        p->Uniform1f(u->m_nCustom[4], 2.0f);
    else if (type == PJ_LAMBERT_CONFORMAL)
        p->Uniform1f(u->m_nCustom[4], 3.0f);
    GLut::ActiveTexture(kTexture1);
    glBindTexture(GL_TEXTURE_2D, m_nVisibleTexture);
    GLut::ActiveTexture(kTexture0);
    glBindTexture(GL_TEXTURE_2D, m_nStyleTexture);
    eMatrix4T<float> view = camera->GetRelativeViewMatrix();
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, view.Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, camera->GetRelativeProjectionMatrix().Ptr());
    // The overlay comes second so that highlights cover the points.
    if (m_pVertexData)
        rs->DrawVertices(eOT_POINT_LIST, m_pVertexData, 0, m_nPointCount, false);
    if (m_pChoiceVertexData)
        rs->DrawVertices(eOT_POINT_LIST, m_pChoiceVertexData, 0, m_nPointCount, false);
    engine->GetVisitor()->EndPass();
    return 1;
}

} // namespace KYR
