#include "eRenderVolumeRayCast.h"
#include "ePicture.h"
#include "GLut.h"
#include "eBase.h"
#include "eCamera.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eMaterial.h"
#include "eMathEngine.h"
#include "eMesh.h"
#include "eProgram.h"
#include "eRenderEngine.h"
#include "eRenderQueue.h"
#include "eRenderSystem.h"
#include "eTexture.h"
#include <epoxy/gl.h>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <new>

namespace KYR
{

namespace
{

char const* const kSource = "Src/RenderEffect/eRenderVolumeRayCast";
unsigned int const kSolidQueueGroup = 6;
int const kTransferEntries = 256;
// Size of the first pass target until the first frame gives it the viewport's.
int const kFirstBufferWidth = 800, kFirstBufferHeight = 600;

// The unit cube standing on its base: x and y from -0.5 to 0.5, z from 0 to 1.
float const kCubeVertices[8][3] = {{-0.5f, -0.5f, 0.0f}, {-0.5f, -0.5f, 1.0f}, {-0.5f, 0.5f, 0.0f},
                                   {-0.5f, 0.5f, 1.0f},  {0.5f, -0.5f, 0.0f},  {0.5f, -0.5f, 1.0f},
                                   {0.5f, 0.5f, 0.0f},   {0.5f, 0.5f, 1.0f}};
// Two triangles a face, counter-clockwise seen from outside.
unsigned short const kCubeIndices[36] = {1, 5, 7, 7, 3, 1, 0, 2, 6, 6, 4, 0, 0, 1, 3, 3, 2, 0,
                                         7, 5, 4, 4, 6, 7, 2, 3, 7, 7, 6, 2, 1, 0, 4, 4, 5, 1};

void FreeTexture(unsigned int name)
{
    glDeleteTextures(1, &name);
}

void FreeFrameBuffer(unsigned int name)
{
    GLut::DeleteFrameBuffers(1, &name);
}

void FreeRenderBuffer(unsigned int name)
{
    GLut::DeleteRenderBuffers(1, &name);
}

unsigned int NewTexture()
{
    GLuint name = 0;
    glGenTextures(1, &name);
    return name;
}

// The frame buffer now bound for drawing: the host's own target, which the second pass
// must draw into again.
unsigned int BoundFrameBuffer()
{
    GLint name = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &name);
    return (unsigned int)name;
}

// width * height * depth in bytes; false when it does not fit a size_t.
bool VoxelBytes(unsigned int width, unsigned int height, unsigned int depth, size_t& bytes)
{
    size_t area = 0;
    return !__builtin_mul_overflow((size_t)width, (size_t)height, &area) &&
           !__builtin_mul_overflow(area, (size_t)depth, &bytes);
}

// The east-north-up frame at a geographic point of the globe, placed at `origin`: the
// cube's x runs east, y north and z up.
eMatrix4T<float> SurfaceFrame(eVector3T<double> const& origin, ePoint2D const& geo)
{
    double lon = geo.x * eMathEngine::DEG_TO_RAD, lat = geo.y * eMathEngine::DEG_TO_RAD;
    double const axes[3][3] = {
        {-std::sin(lon), std::cos(lon), 0.0},
        {-std::sin(lat) * std::cos(lon), -std::sin(lat) * std::sin(lon), std::cos(lat)},
        {std::cos(lat) * std::cos(lon), std::cos(lat) * std::sin(lon), std::sin(lat)}};
    eMatrix4T<float> frame;
    for (int column = 0; column < 3; ++column)
        for (int row = 0; row < 3; ++row)
            frame.At(row, column) = (float)axes[column][row];
    frame.At(0, 3) = (float)origin.x;
    frame.At(1, 3) = (float)origin.y;
    frame.At(2, 3) = (float)origin.z;
    return frame;
}

eTechnique* SharedTechnique()
{
    static eTechnique* s_pTechnique = nullptr;
    if (!s_pTechnique)
    {
        s_pTechnique = new eTechnique();
        ePass* pass = s_pTechnique->CreatePass();
        pass->SetProgram("VolumeRayCast");
        pass->SetBlendingFunc(eBF_SRC_ALPHA, eBF_ONE_MINUS_SRC_ALPHA);
        pass->SetDepthCheckEnabled(1);
        pass->SetDepthWriteEnabled(1);
    }
    return s_pTechnique;
}

} // namespace

eRenderVolumeRayCast::eRenderVolumeRayCast()
    : m_initialized(false), m_width(1), m_height(1), m_depth(1), m_scaleX(1.0), m_scaleY(1.0),
      m_scaleZ(1.0), m_stepSize(0.01f), m_eigenValue(0.0f), m_eigenValueSpan(0.0f),
      m_heightRange(0.0, 0.0), m_bound(-0.5, 0.5, 0.5, -0.5), m_clipHeight(0.0, -1.0),
      m_clipBound(0.0, 0.0, 0.0, 0.0), m_volumeBytes(0), m_colorDirty(true), m_alphaDirty(true),
      m_volumeDirty(true), m_geometryDirty(true), m_bufferWidth(0), m_bufferHeight(0),
      m_colorPath(eSystem::GetWorkPath() + "Resources/Icons/colortable1.png"),
      m_center(0.0, 0.0, 0.0)
{
}

// Voxels, cube and OpenGL objects go with their last holder.
eRenderVolumeRayCast::~eRenderVolumeRayCast() {}

unsigned char eRenderVolumeRayCast::Initialize(eRenderEngine*)
{
    if (m_initialized)
        return 1;
    InitializeVertexBuffer();
    InitializeFrameBuffer();
    m_initialized = true;
    return 1;
}

unsigned char eRenderVolumeRayCast::UnInitialize(eRenderEngine*)
{
    DeleteBuffer();
    m_initialized = false;
    return 0;
}

unsigned char eRenderVolumeRayCast::Reset()
{
    return 0;
}

void eRenderVolumeRayCast::DeleteBuffer()
{
    m_volumeData.Reset();
    m_volumeBytes = 0;
    if (m_cubeVertices)
        m_cubeVertices->Delete();
    if (m_cubeIndices)
        m_cubeIndices->Delete();
}

unsigned char eRenderVolumeRayCast::UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*,
                                                      eRenderQueue* queue)
{
    queue->GetQueueGroup(kSolidQueueGroup)->AddSolidRenderable(SharedTechnique(), this);
    return 1;
}

// ---------------------------------------------------------------------------------------------
// Settings: each stores and marks what the next frame must redo.
// ---------------------------------------------------------------------------------------------

void eRenderVolumeRayCast::SetVolume3DTex(char const* path, unsigned int width, unsigned int height,
                                          unsigned int depth)
{
    m_width = width;
    m_height = height;
    m_depth = depth;
    std::FILE* file = path ? std::fopen(path, "rb") : nullptr;
    if (!file)
        return;
    size_t bytes = 0;
    bool sized = VoxelBytes(width, height, depth, bytes);
    // Sizes the file cannot fill end as a short read would, before anything is allocated
    // for them: a forged size must not ask for more memory than the file holds.
    long length = -1;
    if (sized && std::fseek(file, 0, SEEK_END) == 0)
        length = std::ftell(file);
    if (length < 0 || (unsigned long)length < bytes || std::fseek(file, 0, SEEK_SET) != 0)
        sized = false;
    unsigned char* data = sized ? new (std::nothrow) unsigned char[bytes ? bytes : 1] : nullptr;
    size_t const read = data ? std::fread(data, 1, bytes, file) : 0;
    std::fclose(file);
    m_volumeData.Reset(data);
    m_volumeBytes = bytes;
    if (!data || read < bytes)
    {
        // Too short for its sizes (or too large to hold): nothing waits for upload.
        m_volumeData.Reset();
        m_volumeBytes = 0;
        m_volumeDirty = false;
        return;
    }
    m_volumeDirty = true;
}

void eRenderVolumeRayCast::SetVolume3DTex(unsigned int width, unsigned int height,
                                          unsigned int depth, unsigned char* data)
{
    m_width = width;
    m_height = height;
    m_depth = depth;
    size_t bytes = 0;
    m_volumeData.Reset(data);
    m_volumeBytes = VoxelBytes(width, height, depth, bytes) ? bytes : 0;
    m_volumeDirty = true;
}

void eRenderVolumeRayCast::SetBound(eRect2D& bound)
{
    if (bound == m_bound)
        return;
    m_bound = bound;
    m_geometryDirty = true;
}

void eRenderVolumeRayCast::SetClipBound(eRect2D& bound)
{
    if (bound == m_clipBound)
        return;
    m_clipBound = bound;
    m_geometryDirty = true;
}

void eRenderVolumeRayCast::SetHeight(eVector2T<double>& height)
{
    if (height == m_heightRange)
        return;
    m_heightRange = height;
    m_geometryDirty = true;
}

void eRenderVolumeRayCast::SetClipHeight(eVector2T<double>& height)
{
    if (height == m_clipHeight)
        return;
    m_clipHeight = height;
    m_geometryDirty = true;
}

void eRenderVolumeRayCast::SetColorPath(eString path)
{
    m_colorPath = path;
    m_colorDirty = true;
}

void eRenderVolumeRayCast::SetEigenValue(float value)
{
    m_eigenValue = value;
    m_transferTable.clear();
    m_alphaDirty = true;
}

void eRenderVolumeRayCast::SetEigenValueSpan(float span)
{
    m_eigenValueSpan = span;
    m_transferTable.clear();
    m_alphaDirty = true;
}

void eRenderVolumeRayCast::SetVolumeColorRGBA(std::vector<eVector4T<double>> table)
{
    m_transferTable = std::move(table);
    m_alphaDirty = true;
}

// ---------------------------------------------------------------------------------------------
// The standard transfer function: a smooth rise over a window of values, transparent above.
// ---------------------------------------------------------------------------------------------

float eRenderVolumeRayCast::Smoothstep(float t)
{
    return t * 3 * t - t * 2 * t * t;
}

void eRenderVolumeRayCast::SetStdFunction(float center, float span, int mode)
{
    if (m_transferTable.empty())
        m_transferTable.assign(kTransferEntries, eVector4T<double>(0.0, 0.0, 0.0, 0.0));
    if (mode == 4)
        for (int component = 0; component < 4; ++component)
            SetStdFunction(center, span, component, false);
    else
        SetStdFunction(center, span, 3, false);
}

void eRenderVolumeRayCast::SetStdFunction(float center, float span, int component, bool descending)
{
    // NaN counts as 0, so that the conversions below stay defined.
    center = center >= 0.0f ? std::min(center, 1.0f) : 0.0f;
    span = span >= 0.0f ? std::min(span, 1.0f) : 0.0f;
    size_t const n = m_transferTable.size();
    if (n == 0)
        return;
    unsigned int const c = (unsigned int)((float)(n - 1) * center);
    unsigned int const s = (unsigned int)((float)(n - 1) * span);
    unsigned int const h = s / 2;
    size_t const lo = h > c ? 0 : c - h;
    size_t const hi = std::min((size_t)c + h, n);
    for (size_t i = 0; i < lo; ++i)
        m_transferTable[i][component] = descending ? 1.0 : 0.0;
    // The window is empty unless s >= 2, so s is never 0 here.
    for (size_t i = lo; i < hi; ++i)
    {
        float v = Smoothstep((float)(i + h - c) / (float)s);
        m_transferTable[i][component] = descending ? 1.0f - v : v;
    }
    for (size_t i = std::max(lo, hi); i < n; ++i)
        m_transferTable[i][component] = 0.0;
}

// ---------------------------------------------------------------------------------------------
// OpenGL objects
// ---------------------------------------------------------------------------------------------

void eRenderVolumeRayCast::InitializeVertexBuffer()
{
    if (!m_cubeVertices)
    {
        m_cubeVertices.Reset(new eVertexData());
        m_cubeVertices->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
        m_cubeVertices->AddVertex(&kCubeVertices[0][0], 8);
    }
    if (!m_cubeIndices)
    {
        m_cubeIndices.Reset(new eIndexData());
        for (unsigned short index : kCubeIndices)
            m_cubeIndices->AddIndex(index);
    }
    // The stores keep their data, so buffers that UnInitialize deleted come back without
    // refilling them.
    if (!m_cubeVertices->GetHardwareBuffer())
        m_cubeVertices->Create();
    if (!m_cubeIndices->GetHardwareBuffer())
        m_cubeIndices->Create();
}

void eRenderVolumeRayCast::InitializeFrameBuffer()
{
    if (m_entryTexture && m_frameBuffer)
        return;
    unsigned int const saved = BoundFrameBuffer();
    GLut::ActiveTexture(GL_TEXTURE2);
    m_entryTexture.Reset(NewTexture(), FreeTexture);
    glBindTexture(GL_TEXTURE_2D, m_entryTexture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kFirstBufferWidth, kFirstBufferHeight, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, nullptr);

    unsigned int depth = 0;
    GLut::GenRenderBuffers(1, &depth);
    m_depthBuffer.Reset(depth, FreeRenderBuffer);
    GLut::BindRenderBuffer(GL_RENDERBUFFER, depth);
    GLut::RenderBufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT, kFirstBufferWidth,
                              kFirstBufferHeight);
    GLut::BindRenderBuffer(GL_RENDERBUFFER, 0);

    unsigned int frameBuffer = 0;
    GLut::GenFrameBuffers(1, &frameBuffer);
    m_frameBuffer.Reset(frameBuffer, FreeFrameBuffer);
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, frameBuffer);
    GLut::FrameBufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_entryTexture,
                               0);
    GLut::FrameBufferRenderBuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
    GLut::CheckFrameBufferStatus(GL_FRAMEBUFFER); // not acted on
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, saved);
    GLut::ActiveTexture(GL_TEXTURE0);
    // The first frame reallocates to the viewport's size, whatever that is.
    m_bufferWidth = m_bufferHeight = 0;
}

void eRenderVolumeRayCast::ResizeFrameBuffer(int width, int height)
{
    glBindTexture(GL_TEXTURE_2D, m_entryTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    GLut::BindRenderBuffer(GL_RENDERBUFFER, m_depthBuffer);
    GLut::RenderBufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT, width, height);
    GLut::BindRenderBuffer(GL_RENDERBUFFER, 0);
    m_bufferWidth = width;
    m_bufferHeight = height;
}

void eRenderVolumeRayCast::RecreateVolumeTex()
{
    if (!m_volumeDirty || !m_volumeData)
        return;
    size_t bytes = 0;
    if (!VoxelBytes(m_width, m_height, m_depth, bytes) || bytes > m_volumeBytes)
    {
        // Sizes changed since the voxels came (a file that did not open): they cannot fill
        // the texture, so they are dropped rather than read past their end.
        Eassert("volume bytes >= width * height * depth", kSource, __LINE__);
        m_volumeData.Reset();
        m_volumeBytes = 0;
        m_volumeDirty = false;
        return;
    }
    if (!m_volumeTexture)
    {
        GLut::ActiveTexture(GL_TEXTURE0);
        m_volumeTexture.Reset(NewTexture(), FreeTexture);
        glBindTexture(GL_TEXTURE_3D, m_volumeTexture);
        glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_T, GL_REPEAT);
        glTexParameteri(GL_TEXTURE_3D, GL_TEXTURE_WRAP_R, GL_REPEAT);
    }
    else
        glBindTexture(GL_TEXTURE_3D, m_volumeTexture);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    GLut::TexImage3D(GL_TEXTURE_3D, 0, GL_INTENSITY, (int)m_width, (int)m_height, (int)m_depth, 0,
                     GL_LUMINANCE, GL_UNSIGNED_BYTE, m_volumeData.Get());
    // The graphics card holds the voxels now; the processor copy goes at once.
    m_volumeData.Reset();
    m_volumeBytes = 0;
    m_volumeDirty = false;
}

unsigned char eRenderVolumeRayCast::CreatTextrue(eSharedName& texture, eString const& path)
{
    eFileStream stream;
    if (!stream.Open(path.Cstr(), 2, 8192))
        return 0;
    eByteArray bytes;
    unsigned char const loaded = stream.LoadByteArray(bytes);
    stream.Close();
    eImageData* image =
        loaded && bytes.GetSize() ? eFileParserToolkit::LoadImageData(bytes, 32) : nullptr;
    if (image)
    {
        if (!texture)
            texture.Reset(NewTexture(), FreeTexture);
        glBindTexture(GL_TEXTURE_2D, texture);
        ePicture::UploadClampedLinear(image);
        delete image;
    }
    return 1;
}

void eRenderVolumeRayCast::RecreateColorTex()
{
    if (!m_colorDirty || m_colorPath.IsEmpty())
        return;
    GLut::ActiveTexture(GL_TEXTURE3);
    CreatTextrue(m_colorTexture, m_colorPath); // a table that does not load keeps the old one
    GLut::ActiveTexture(GL_TEXTURE0);
    m_colorDirty = false;
}

void eRenderVolumeRayCast::RecreateAlphaTex()
{
    if (!m_alphaDirty)
        return;
    if (m_transferTable.empty())
        SetStdFunction(m_eigenValue, (float)(m_eigenValueSpan * 0.00390625), 1); // span in 1/256
    std::vector<float> texels((size_t)kTransferEntries * 4);
    size_t const n = m_transferTable.size();
    for (size_t i = 0; i < (size_t)kTransferEntries; ++i)
        for (int k = 0; k < 4; ++k)
            texels[i * 4 + k] = (float)m_transferTable[i % n][k];
    GLut::ActiveTexture(GL_TEXTURE1);
    if (!m_transferTexture)
    {
        m_transferTexture.Reset(NewTexture(), FreeTexture);
        glBindTexture(GL_TEXTURE_1D, m_transferTexture);
        glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_REPEAT);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    }
    else
        glBindTexture(GL_TEXTURE_1D, m_transferTexture);
    glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, kTransferEntries, 0, GL_RGBA, GL_FLOAT, texels.data());
    GLut::ActiveTexture(GL_TEXTURE0);
    m_alphaDirty = false;
}

unsigned int eRenderVolumeRayCast::initTFF1DTex(char const* path)
{
    std::ifstream in(path ? path : "", std::ios::binary);
    if (!in)
    {
        std::cerr << "Error openning file: " << (path ? path : "") << std::endl;
        std::exit(1);
    }
    size_t const capacity = 10000;
    std::vector<char> data(capacity + 1, 0); // room for the end mark after a full read
    in.read(data.data(), (std::streamsize)capacity);
    std::streamsize const count = in.gcount();
    if (in.eof())
    {
        data[(size_t)count] = '\0';
        std::cout << "bytecnt " << count << std::endl;
    }
    else if (in.fail())
        std::cout << path << "read failed " << std::endl;
    else
        std::cout << path << "is too large" << std::endl;
    GLut::ActiveTexture(GL_TEXTURE1);
    unsigned int texture = NewTexture();
    glBindTexture(GL_TEXTURE_1D, texture);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA, kTransferEntries, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 data.data());
    return texture;
}

// ---------------------------------------------------------------------------------------------
// Geometry: where the cube stands and which part of the volume it shows.
// ---------------------------------------------------------------------------------------------

eMatrix4T<float> eRenderVolumeRayCast::CreatTexMatrix(eVector3T<double> const& fullMin,
                                                      eVector3T<double> const& fullMax,
                                                      eVector3T<double> const& shownMin,
                                                      eVector3T<double> const& shownMax)
{
    double offset[3], scale[3];
    for (int k = 0; k < 3; ++k)
    {
        // A flat volume has no extent to divide by: that axis maps as it stands.
        double const extent = fullMax[k] - fullMin[k];
        offset[k] = extent != 0.0 ? (shownMin[k] - fullMin[k]) / extent : 0.0;
        scale[k] = extent != 0.0 ? (shownMax[k] - shownMin[k]) / extent : 1.0;
    }
    return eMatrix4T<float>::Translation((float)offset[0], (float)offset[1], (float)offset[2]) *
           eMatrix4T<float>::Scale((float)scale[0], (float)scale[1], (float)scale[2]);
}

void eRenderVolumeRayCast::RecalculateScale(eCamera* camera)
{
    if (camera)
        camera->GetCameraState();
}

void eRenderVolumeRayCast::RecalculatePoint(eRenderEngine* engine)
{
    if (!m_geometryDirty)
        return;
    eCoordSys* coordSys = engine->GetCoordSys();
    eCamera* camera = engine->GetCamera();
    if (!coordSys || !camera)
    {
        Eassert("coordSys != NULL && camera != NULL", kSource, __LINE__);
        return;
    }
    // Clips that were never set show everything.
    eRect2D const clipBound = m_clipBound.Width() == 0.0 ? m_bound : m_clipBound;
    eVector2T<double> const clipHeight =
        m_clipHeight.x > m_clipHeight.y ? m_heightRange : m_clipHeight;
    eRect2D rect = m_bound;
    rect.IntersectRect(clipBound);
    if (rect.IsEmpty())
        rect = m_bound;
    double const zMin = std::max(m_heightRange.x, clipHeight.x);
    double const zMax = std::min(m_heightRange.y, clipHeight.y);
    m_texMatrix = CreatTexMatrix(eVector3T<double>(m_bound.left, m_bound.bottom, m_heightRange.x),
                                 eVector3T<double>(m_bound.right, m_bound.top, m_heightRange.y),
                                 eVector3T<double>(rect.left, rect.bottom, zMin),
                                 eVector3T<double>(rect.right, rect.top, zMax));

    eSceneMode const mode = camera->GetSceneMode();
    ePoint2D const geoCentre = rect.CenterPoint();
    ePoint2D map, centre;
    coordSys->GeoToMap(geoCentre, map);
    coordSys->MapToLogicalPoint(map, centre);
    coordSys->LogicalToWorld(mode, centre, m_center, m_heightRange.x);
    ePoint2D topLeft, bottomRight;
    coordSys->GeoToMap(ePoint2D(rect.left, rect.top), topLeft);
    coordSys->MapToLogicalPoint(topLeft, topLeft);
    coordSys->GeoToMap(ePoint2D(rect.right, rect.bottom), bottomRight);
    coordSys->MapToLogicalPoint(bottomRight, bottomRight);
    eRect2D const r(topLeft.x, topLeft.y, bottomRight.x, bottomRight.y);

    m_scaleZ = std::fabs(zMax - zMin);
    m_scaleX = 2.0 * std::fabs(r.left - centre.x);
    m_scaleY = 2.0 * std::fabs(r.top - centre.y);
    if (mode == eSM_GLOBE)
    {
        // Logical units are degrees on the globe; the cube is measured in metres along the
        // surface at its centre.
        double const radius = eMathEngine::EARTH_RADIUS + m_heightRange.x;
        m_scaleX *=
            eMathEngine::DEG_TO_RAD * radius * std::cos(geoCentre.y * eMathEngine::DEG_TO_RAD);
        m_scaleY *= eMathEngine::DEG_TO_RAD * radius;
        m_modelMatrix = SurfaceFrame(m_center, geoCentre);
    }
    else
        m_modelMatrix = eMatrix4T<float>::Translation(eVector3T<float>(m_center));
    m_geometryDirty = false;
}

// ---------------------------------------------------------------------------------------------
// The frame
// ---------------------------------------------------------------------------------------------

void eRenderVolumeRayCast::SendFrameUniforms(eRenderProgram* rp, eCamera* camera)
{
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    eVector3T<double> const& ref = camera->GetReferenceCenter();
    eMatrix4T<float> const world =
        eMatrix4T<float>::Translation((float)-ref.x, (float)-ref.y, (float)-ref.z) * m_modelMatrix *
        eMatrix4T<float>::Scale((float)m_scaleX, (float)m_scaleY, (float)m_scaleZ);
    eMatrix4T<float> const& view = camera->GetRelativeViewMatrix();
    eMatrix4T<float> const n = (view * world).Inverse().Transpose();
    float const normal[9] = {n[0], n[1], n[2], n[4], n[5], n[6], n[8], n[9], n[10]};
    eVector3T<double> const& eye = camera->GetCameraPosition();
    eVector3T<double> const& light = camera->GetLight()->GetPosition();

    p->Use();
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    p->UniformMatrix4(u->m_nWorldMatrix, 1, 0, world.Ptr());
    p->UniformMatrix4(u->m_nViewMatrix, 1, 0, view.Ptr());
    p->UniformMatrix4(u->m_nProjectionMatrix, 1, 0, camera->GetRelativeProjectionMatrix().Ptr());
    p->UniformMatrix3(u->m_nNormalMatrix, 1, 1, normal);
    p->Uniform3f(u->m_nCustom[eR_COLOR], 1.0f, 1.0f, 1.0f);
    p->Uniform3f(u->m_nCustom[eR_CAMERA_POSITION], (float)(eye.x - ref.x), (float)(eye.y - ref.y),
                 (float)(eye.z - ref.z));
    p->Uniform3f(u->m_nCustom[eR_LIGHT_POSITION], (float)light.x, (float)light.y, (float)light.z);
}

void eRenderVolumeRayCast::DrawCube(eRenderSystem* rs)
{
    if (m_cubeVertices && m_cubeIndices)
        rs->DrawIndexed(eOT_TRIANGLE_LIST, m_cubeVertices, m_cubeIndices, false);
}

unsigned char eRenderVolumeRayCast::Render(eRenderEngine* engine, eRenderSystem* rs,
                                           eCamera* camera, eViewport* viewport)
{
    if (!engine || !rs || !camera || !viewport)
        return 0;
    if (!m_initialized)
        Initialize(engine);
    RecreateVolumeTex();
    RecreateColorTex();
    RecreateAlphaTex();
    RecalculatePoint(engine);
    eRenderProgram* rp = engine->GetRenderProgram(eString("VolumeRayCast"));
    if (!rp || !rp->GetProgram())
        return 0; // the host has reported the missing program
    eProgram* p = rp->GetProgram();
    eShaderUniform* u = rp->GetUniform();
    SendFrameUniforms(rp, camera);

    // First pass: the front faces' cube coordinates into the entry texture.
    unsigned int const target = BoundFrameBuffer();
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, m_frameBuffer);
    int const width = viewport->GetActualWidth(), height = viewport->GetActualHeight();
    if (width != m_bufferWidth || height != m_bufferHeight)
        ResizeFrameBuffer(width, height);
    glBindTexture(GL_TEXTURE_2D, m_entryTexture);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glClearColor(1.0f, 0.0f, 0.0f, 1.0f); // for the next clear
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glEnable(GL_TEXTURE_2D);
    p->Uniform1f(u->m_nCustom[eR_RAY_PASS], 1.0f);
    DrawCube(rs);

    // Second pass: the back faces march from the entry point to themselves.
    GLut::BindFrameBuffer(GL_FRAMEBUFFER, target);
    glCullFace(GL_FRONT);
    GLut::ActiveTexture(GL_TEXTURE2);
    glBindTexture(GL_TEXTURE_2D, m_entryTexture);
    p->Uniform1i(u->m_nCustom[eR_ENTRY_SAMPLER], 2);
    GLut::ActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_1D, m_transferTexture);
    p->Uniform1i(u->m_nCustom[eR_TRANSFER_SAMPLER], 1);
    GLut::ActiveTexture(GL_TEXTURE3);
    glBindTexture(GL_TEXTURE_2D, m_colorTexture);
    p->Uniform1i(u->m_nCustom[eR_COLOR_SAMPLER], 3);
    GLut::ActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_3D, m_volumeTexture);
    p->Uniform1i(u->m_nCustom[eR_VOLUME_SAMPLER], 0);
    p->Uniform1f(u->m_nCustom[eR_RAY_PASS], 0.0f);
    p->Uniform2f(u->m_nCustom[eR_SCREEN_SIZE], (float)width, (float)height);
    p->Uniform1f(u->m_nCustom[eR_STEP_SIZE], m_stepSize);
    p->UniformMatrix4(u->m_nCustom[eR_TEX_MATRIX], 1, 0, m_texMatrix.Ptr());
    DrawCube(rs);

    glDisable(GL_TEXTURE_2D);
    glDisable(GL_CULL_FACE);
    return 1;
}

} // namespace KYR
