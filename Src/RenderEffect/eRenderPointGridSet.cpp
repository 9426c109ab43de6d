#include "eRenderPointGridSet.h"
#include "GLut.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eDataSetFrame.h"
#include "eMaterial.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueueVisitor.h"
#include "eText.h"
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <epoxy/gl.h>

namespace KYR
{

namespace
{

unsigned int const kVertexType = 133;
int const kQuadVertices = 6;
int const kGlyphVertices = 4;
// The width and height of a digit in pixels that a number is centred by.
int const kDigitWidth = 9;
double const kDigitHeight = 14.0;
unsigned long long const kEmptySlot = ~0ull; // no key has its top five bits set
unsigned long long const kGolden = 0x9E3779B97F4A7C15ull;
size_t const kMinTableSize = 1024;
size_t const kBlock = 256; // points whose keys are worked out before they are counted
size_t const kAhead = 16;  // how far ahead a point is fetched

// Both stores: a group of four floats the programs leave alone, the vertex's own four
// floats, and a colour.
struct eGridVertex
{
    float m_fUnused[4];
    float m_fData[4];
    unsigned char m_cColor[4];
};
static_assert(sizeof(eGridVertex) == 36, "the vertex record is 36 bytes");

eGridVertex MakeVertex(float a, float b, float c, float d)
{
    eGridVertex v = {{0.0f, 0.0f, 0.0f, 0.0f}, {a, b, c, d}, {0, 255, 0, 255}};
    return v;
}

eVertexData* NewStore()
{
    eVertexData* data = new eVertexData();
    data->SetVertexType(kVertexType);
    data->AddElement(eVET_FLOAT, eVEC_4, eAI_POSITION, 0);
    data->AddElement(eVET_FLOAT, eVEC_4, eAI_TEXCOORD0, 0);
    data->AddElement(eVET_UNSIGNED_BYTE, eVEC_4, eAI_COLOR, 1);
    return data;
}

// floor of a quotient as a 32-bit int; NaN and what lies outside the range give INT_MIN,
// as the processor's own conversion does.
int FloorToInt(double q)
{
    if (!(q >= -2147483648.0 && q < 2147483648.0))
        return INT_MIN;
    int t = (int)q;
    return (double)t > q ? t - 1 : t;
}

// floor(v / cell). The product with the inverse is within a few units in the last place of
// the quotient, so wherever no integer lies that close the two have the same floor and the
// division is skipped; near a cell edge (or with no usable inverse, NaN) it is divided.
inline int CellIndex(double v, double cell, double inverse)
{
    double q = v * inverse;
    if (q >= -2147483647.0 && q < 2147483647.0)
    {
        // Without branches on the sign or the fraction, which follow the data and would be
        // mispredicted half the time.
        int t = (int)q;
        t -= (double)t > q;
        double frac = q - (double)t, margin = (std::fabs(q) + 1.0) * 0x1p-45;
        if ((frac > margin) & (frac < 1.0 - margin))
            return t;
    }
    return FloorToInt(v / cell);
}

inline unsigned long long CellKey(int col, int row, int level)
{
    unsigned int low = ((unsigned int)col << 5) | ((unsigned int)level & 31u);
    unsigned int high = (unsigned int)row & 0x7FFFFFFu;
    return ((unsigned long long)high << 32) | low;
}

eCoordSys* CoordSysOf(eRenderEngine* engine, eCanvas* canvas)
{
    eCoordSys* cs = engine ? engine->GetCoordSys() : nullptr;
    return cs ? cs : (canvas ? canvas->GetCoordSys() : nullptr);
}

} // namespace

struct eRenderPointGridSet::ePointOwner
{
    std::vector<eGridPoint*> m_arPoints;
    // A point added twice is deleted once.
    ~ePointOwner()
    {
        std::sort(m_arPoints.begin(), m_arPoints.end());
        m_arPoints.erase(std::unique(m_arPoints.begin(), m_arPoints.end()), m_arPoints.end());
        for (eGridPoint* point : m_arPoints)
            delete point;
    }
};

eRenderPointGridSet::eRenderPointGridSet()
{
    eTechnique* technique = new eTechnique();
    ePass* pass = technique->CreatePass();
    pass->SetProgram("PointLabel");
    pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
    pass->SetDepthCheckEnabled(1);
    pass->SetDepthWriteEnabled(0);
    pass->SetLightingEnabled(0);
    pass->SetDepthBiasConstant(100.0f);
    pass->SetDepthBiasSlopeScale(100.0f);
    m_pLabelTechnique.Reset(technique);
}

// Points, map, stores and techniques go with the last copy that holds them.
eRenderPointGridSet::~eRenderPointGridSet() {}

eRenderable::Type eRenderPointGridSet::GetType()
{
    return eRT_NONE;
}

// ---------------------------------------------------------------------------------------------
// Life
// ---------------------------------------------------------------------------------------------

unsigned char eRenderPointGridSet::Initialize(eRenderEngine*)
{
    if (m_bInitialized)
        return m_bInitialized;
    if (m_arGlyphs.empty())
    {
        eTextContext text;
        text.GetTextGlyphsFromCache("0123456789", m_nTextSize, m_nTextSize, "", 0, m_arGlyphs);
    }
    CreateBuffers();
    m_bInitialized = 1;
    return m_bInitialized;
}

unsigned char eRenderPointGridSet::UnInitialize(eRenderEngine*)
{
    DestroyBuffers();
    m_arGlyphs.clear();
    m_bInitialized = 0;
    return 1;
}

unsigned char eRenderPointGridSet::CreateBuffers()
{
    if (!m_pQuadData)
    {
        // Two triangles of the square from (-1, -1) to (1, 1).
        float const corners[kQuadVertices][2] = {{-1.0f, -1.0f}, {1.0f, -1.0f}, {-1.0f, 1.0f},
                                                 {1.0f, -1.0f},  {-1.0f, 1.0f}, {1.0f, 1.0f}};
        eVertexData* data = NewStore();
        for (auto const& c : corners)
        {
            eGridVertex v = MakeVertex(c[0], c[1], 1.0f, 0.0f);
            data->AddVertex(reinterpret_cast<unsigned char const*>(&v), 1);
        }
        data->Create();
        m_pQuadData.Reset(data);
    }
    if (!m_pGlyphData)
    {
        // Digit d's strip begins at vertex 4d: bottom-left, bottom-right, top-left, top-right
        // of the glyph's cell, with the cell's size in pixels.
        eVertexData* data = NewStore();
        for (tagTextGlyph const* g : m_arGlyphs)
        {
            float gw = g ? (float)g->m_nWidth : 0.0f, gh = g ? (float)g->m_nHeight : 0.0f;
            float u = g && g->m_nTextureWidth > 0 ? gw / (float)g->m_nTextureWidth : 0.0f;
            float v = g && g->m_nTextureHeight > 0 ? gh / (float)g->m_nTextureHeight : 0.0f;
            eGridVertex const strip[kGlyphVertices] = {
                MakeVertex(0.0f, v, gw, gh), MakeVertex(u, v, gw, gh),
                MakeVertex(0.0f, 0.0f, gw, gh), MakeVertex(u, 0.0f, gw, gh)};
            data->AddVertex(reinterpret_cast<unsigned char const*>(strip), kGlyphVertices);
        }
        data->Create();
        m_pGlyphData.Reset(data);
    }
    return 1;
}

unsigned char eRenderPointGridSet::DestroyBuffers()
{
    m_pQuadData.Reset();
    m_pGlyphData.Reset();
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Points and colours
// ---------------------------------------------------------------------------------------------

void eRenderPointGridSet::Add(eGridPoint* point)
{
    if (!point)
        return;
    point->m_vLocal = PositionToLocal(m_nSpatialRefType, point->m_vPosition);
    if (!m_pOwner)
        m_pOwner.Reset(new ePointOwner());
    m_pOwner->m_arPoints.push_back(point);
    m_arPoints.push_back(point);
}

// The points go now unless a copy of the set still holds them; then they go with it.
void eRenderPointGridSet::RemoveAll()
{
    std::vector<eGridPoint*>().swap(m_arPoints);
    m_pOwner.Reset();
}

void eRenderPointGridSet::SetColorMap(eColorMap* map)
{
    if (!map || map->GetSize() == 0)
    {
        m_pColorMap.Reset();
        return;
    }
    if (!m_pColorMap)
        m_pColorMap.Reset(new eColorMap());
    *m_pColorMap = *map;
}

// ---------------------------------------------------------------------------------------------
// Counting
// ---------------------------------------------------------------------------------------------

void eRenderPointGridSet::ResetTable(size_t expected)
{
    size_t size = kMinTableSize;
    while (size < expected * 2)
        size *= 2;
    if (m_arTable.size() != size)
        m_arTable.assign(size, eSlot{kEmptySlot, 0u});
    else
        for (eSlot& slot : m_arTable)
            slot.m_nKey = kEmptySlot;
    int bits = 0;
    while (((size_t)1 << bits) < size)
        ++bits;
    m_nTableShift = 64 - bits;
    m_nTableUsed = 0;
}

void eRenderPointGridSet::GrowTable()
{
    std::vector<eSlot> old;
    old.swap(m_arTable);
    m_arTable.assign(old.size() * 2, eSlot{kEmptySlot, 0u});
    --m_nTableShift;
    size_t mask = m_arTable.size() - 1;
    for (eSlot const& s : old)
    {
        if (s.m_nKey == kEmptySlot)
            continue;
        size_t slot = (size_t)((s.m_nKey * kGolden) >> m_nTableShift);
        while (m_arTable[slot].m_nKey != kEmptySlot)
            slot = (slot + 1) & mask;
        m_arTable[slot] = s;
    }
}

inline void eRenderPointGridSet::Count(unsigned long long key, unsigned int value)
{
    size_t mask = m_arTable.size() - 1;
    for (size_t slot = (size_t)((key * kGolden) >> m_nTableShift);; slot = (slot + 1) & mask)
    {
        eSlot& s = m_arTable[slot];
        if (s.m_nKey == key)
        {
            s.m_nTotal += value;
            return;
        }
        if (s.m_nKey == kEmptySlot)
        {
            s.m_nKey = key;
            s.m_nTotal = value;
            if (++m_nTableUsed * 2 > m_arTable.size())
                GrowTable();
            return;
        }
    }
}

// The totals are kept in a hashed table and only the occupied cells are put in key order,
// which is the order they are drawn in.
void eRenderPointGridSet::ClusterPoints(double cell, int level)
{
    ResetTable(m_arCells.size());
    m_arCells.clear();
    double inverse = 1.0 / cell;
    if (!(cell > 0.0 && std::isfinite(cell) && std::isnormal(inverse)))
        inverse = NAN; // every point takes the division
    // Block by block: first the keys, while the points further on and the keys' slots are
    // fetched from memory, then the counting, which then finds its slots in the cache.
    unsigned long long keys[kBlock];
    unsigned int values[kBlock];
    eGridPoint* const* points = m_arPoints.data();
    size_t const count = m_arPoints.size();
    for (size_t first = 0; first < count; first += kBlock)
    {
        size_t n = std::min(kBlock, count - first);
        for (size_t i = 0; i < n; ++i)
        {
            if (first + i + kAhead < count)
                __builtin_prefetch(points[first + i + kAhead]);
            eGridPoint const* point = points[first + i];
            int col = CellIndex(point->m_vLocal.x, cell, inverse);
            int row = CellIndex(-point->m_vLocal.y, cell, inverse);
            keys[i] = CellKey(col, row, level);
            values[i] = (unsigned int)point->m_nValue;
            __builtin_prefetch(&m_arTable[(size_t)((keys[i] * kGolden) >> m_nTableShift)], 1);
        }
        for (size_t i = 0; i < n; ++i)
            Count(keys[i], values[i]);
    }
    m_arCells.reserve(m_nTableUsed);
    for (eSlot const& s : m_arTable)
        if (s.m_nKey != kEmptySlot)
            m_arCells.push_back(eGridCell{s.m_nKey, (int)s.m_nTotal});
    SortCells();
}

// Byte by byte from the lowest, each pass stable, so the keys end in ascending order. A byte
// that every key shares (the level, the top bytes of nearby rows and columns) needs no pass.
void eRenderPointGridSet::SortCells()
{
    size_t const n = m_arCells.size();
    if (n < 64)
    {
        std::sort(m_arCells.begin(), m_arCells.end(),
                  [](eGridCell const& a, eGridCell const& b) { return a.m_nKey < b.m_nKey; });
        return;
    }
    unsigned int counts[8][256] = {};
    for (eGridCell const& c : m_arCells)
        for (int d = 0; d < 8; ++d)
            ++counts[d][(c.m_nKey >> (8 * d)) & 255u];
    m_arSorted.resize(n);
    eGridCell* from = m_arCells.data();
    eGridCell* to = m_arSorted.data();
    for (int d = 0; d < 8; ++d)
    {
        unsigned int* start = counts[d];
        if (start[(from[0].m_nKey >> (8 * d)) & 255u] == n)
            continue;
        unsigned int sum = 0;
        for (int b = 0; b < 256; ++b)
        {
            unsigned int count = start[b];
            start[b] = sum;
            sum += count;
        }
        for (size_t i = 0; i < n; ++i)
            to[start[(from[i].m_nKey >> (8 * d)) & 255u]++] = from[i];
        std::swap(from, to);
    }
    if (from != m_arCells.data())
        m_arCells.swap(m_arSorted);
}

eVector4T<float> eRenderPointGridSet::CellCentre(unsigned long long key, double cell)
{
    // The column comes back by an arithmetic shift of the low word, the row by extending
    // the sign of its 27 bits.
    int col = (int)(unsigned int)key >> 5;
    int row = (int)((unsigned int)(key >> 32) << 5) >> 5;
    double left = col * cell, right = left + cell;
    double top = -(double)row * cell, bottom = top - cell;
    return eVector4T<float>((float)((left + right) / 2.0), (float)((top + bottom) / 2.0), 0.0f,
                            0.0f);
}

// ---------------------------------------------------------------------------------------------
// Frame
// ---------------------------------------------------------------------------------------------

unsigned char eRenderPointGridSet::RenderVertexBuffer(eRenderEngine* engine, eRenderSystem* rs,
                                                      eCamera* camera)
{
    ePass* pass = m_pTechnique ? m_pTechnique->GetPass(0) : nullptr;
    eRenderProgram* program = engine && pass ? engine->GetRenderProgram(pass) : nullptr;
    if (!program)
        return 0;
    // The level's own resolution, so that the cells stay the same while the level does.
    double resolution = engine->GetRenderResolution(1);
    int level = 0;
    if (eCoordSys* cs = CoordSysOf(engine, m_pCanvas))
    {
        level = cs->ResolutionToLevel(resolution);
        resolution = cs->LevelToResolution(level);
    }
    double cell = m_fGridSize * resolution;
    SetFrameUniforms(program, (float)cell);
    UpdateProgram(engine, rs, camera, program);
    ClusterPoints(cell, level);
    DrawCells(program, cell);
    DrawLabels(engine, rs, camera, cell);
    return 1;
}

void eRenderPointGridSet::DrawCells(eRenderProgram* program, double cell)
{
    if (!eDataSetFrame::BindVertexData(m_pQuadData.Get()))
        return;
    eVector4T<unsigned char> const white(255, 255, 255, 255);
    for (eGridCell const& c : m_arCells)
    {
        eVector4T<unsigned char> rgba = m_pColorMap ? m_pColorMap->GetColor(c.m_nTotal) : white;
        eVector4T<float> color((float)(rgba.x / 255.0), (float)(rgba.y / 255.0),
                               (float)(rgba.z / 255.0), (float)(rgba.w / 255.0));
        eVector4T<float> centre = CellCentre(c.m_nKey, cell);
        RenderVertex(program, color, centre);
    }
    eDataSetFrame::UnbindVertexData(m_pQuadData.Get());
}

void eRenderPointGridSet::DrawLabels(eRenderEngine* engine, eRenderSystem* rs, eCamera* camera,
                                     double cell)
{
    ePass* pass = m_pLabelTechnique ? m_pLabelTechnique->GetPass(0) : nullptr;
    if (!pass)
        return;
    if (eRenderQueueVisitor* visitor = engine->GetVisitor())
        visitor->BeginPass(pass);
    eRenderProgram* program = engine->GetRenderProgram(pass);
    if (!program)
        return;
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    // A glyph's pixels are this long on the ground at the view's own resolution.
    double unit = engine->GetRenderResolution(1);
    SetFrameUniforms(program, (float)unit);
    p->Uniform4f(u->m_nColor, (float)(m_cTextColor.x / 255.0), (float)(m_cTextColor.y / 255.0),
                 (float)(m_cTextColor.z / 255.0), (float)(m_cTextColor.w / 255.0));
    UpdateProgram(engine, rs, camera, program);
    // The host hands the camera's matrices to the program of the queued pass only.
    if (!camera)
        camera = m_pCamera;
    if (camera)
    {
        p->UniformMatrix4(u->m_nViewMatrix, 1, 0, camera->GetRelativeViewMatrix().Ptr());
        p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0,
                          camera->GetRelativeProjectionMatrix().Ptr());
    }
    if (!eDataSetFrame::BindVertexData(m_pGlyphData.Get()))
        return;
    for (eGridCell const& c : m_arCells)
        RenderText(program, CellCentre(c.m_nKey, cell), unit, c.m_nTotal);
    glBindTexture(GL_TEXTURE_2D, 0);
    eDataSetFrame::UnbindVertexData(m_pGlyphData.Get());
}

void eRenderPointGridSet::RenderVertex(eRenderProgram* program, eVector4T<float>& color,
                                       eVector4T<float>& centre)
{
    eProgram* p = program->GetProgram();
    eShaderUniform* u = program->GetUniform();
    p->Uniform4f(u->m_nColor, color.x, color.y, color.z, color.w);
    p->Uniform3f(u->m_nCustom[eR_POSITION], centre.x, centre.y, centre.z);
    glDrawArrays(GL_TRIANGLES, 0, kQuadVertices);
}

void eRenderPointGridSet::RenderText(eRenderProgram* program, eVector4T<float> centre, double unit,
                                     int value)
{
    char digits[16];
    int length = std::snprintf(digits, sizeof digits, "%d", value);
    double x = centre.x - (length * kDigitWidth) * unit * 0.5;
    double y = centre.y + unit * kDigitHeight * 0.5;
    eProgram* p = program->GetProgram();
    int position = program->GetUniform()->m_nCustom[eR_POSITION];
    // Glyphs the store has no strip for (it was made before they were known) are skipped.
    int stored = m_pGlyphData ? m_pGlyphData->GetVertexSize() : 0;
    for (int i = 0; i < length; ++i)
    {
        // A character that is no digit, such as a minus sign, ends the number.
        int d = digits[i] - '0';
        if (d < 0 || d >= (int)m_arGlyphs.size())
            return;
        tagTextGlyph const* glyph = m_arGlyphs[(size_t)d];
        if (!glyph)
            continue;
        glBindTexture(GL_TEXTURE_2D, glyph->m_nTextureID);
        p->Uniform3f(position, (float)x, (float)y, centre.z);
        if ((d + 1) * kGlyphVertices <= stored)
            glDrawArrays(GL_TRIANGLE_STRIP, d * kGlyphVertices, kGlyphVertices);
        x += glyph->m_nAdvanceX * unit;
        y += glyph->m_nAdvanceY * unit;
    }
}

} // namespace KYR
