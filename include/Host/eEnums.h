// Enumerations of the host engine. Where a value equals an OpenGL constant the
// host passes it straight through to OpenGL.
#pragma once

namespace KYR
{

enum eVertexElementType
{
    eVET_BYTE = 5120,
    eVET_UNSIGNED_BYTE = 5121,
    eVET_SHORT = 5122,
    eVET_UNSIGNED_SHORT = 5123,
    eVET_INT = 5124,
    eVET_UNSIGNED_INT = 5125,
    eVET_FLOAT = 5126,
};

enum eVertexElementCount
{
    eVEC_1 = 1,
    eVEC_2 = 2,
    eVEC_3 = 3,
    eVEC_4 = 4,
};

// Generic attribute numbers; programs bind their attribute names to these.
enum eAttributeIndex
{
    eAI_POSITION = 0,
    eAI_ATTRIB1 = 1,
    eAI_COLOR = 2,
    eAI_ATTRIB3 = 3,
    eAI_ATTRIB4 = 4,
    eAI_ATTRIB5 = 5,
    eAI_ATTRIB6 = 6,
    eAI_TEXCOORD0 = 7,
    eAI_TEXCOORD1 = 8,
    eAI_TEXCOORD2 = 9,
    eAI_ATTRIB10 = 10,
    eAI_ATTRIB11 = 11,
    eAI_ATTRIB12 = 12,
    eAI_ATTRIB13 = 13,
    eAI_ATTRIB14 = 14,
    eAI_ATTRIB15 = 15,
};

enum eOperationType
{
    eOT_POINT_LIST = 0,
    eOT_LINE_LIST = 1,
    eOT_LINE_LOOP = 2,
    eOT_LINE_STRIP = 3,
    eOT_TRIANGLE_LIST = 4,
    eOT_TRIANGLE_STRIP = 5,
    eOT_TRIANGLE_FAN = 6,
};

enum eBlendFactor
{
    eBF_ZERO = 0,
    eBF_ONE = 1,
    eBF_SRC_COLOR = 768,
    eBF_ONE_MINUS_SRC_COLOR = 769,
    eBF_SRC_ALPHA = 770,
    eBF_ONE_MINUS_SRC_ALPHA = 771,
    eBF_DST_ALPHA = 772,
    eBF_ONE_MINUS_DST_ALPHA = 773,
};

enum eCompareFunction
{
    eCF_NEVER = 512,
    eCF_LESS = 513,
    eCF_EQUAL = 514,
    eCF_LESS_EQUAL = 515,
    eCF_GREATER = 516,
    eCF_NOT_EQUAL = 517,
    eCF_GREATER_EQUAL = 518,
    eCF_ALWAYS = 519,
};

enum eProjectionMode
{
    ePM_ORTHOGRAPHIC = 0,
    ePM_PERSPECTIVE = 1,
};

enum eLightModel
{
    eLM_PHONG = 4,
};

enum eTextureWrapMode
{
    eTWM_CLAMP = 10496,
    eTWM_REPEAT = 10497,
    eTWM_CLAMP_TO_EDGE = 33071,
};

enum eTextureFilterMode
{
    eTFM_NEAREST = 9728,
    eTFM_LINEAR = 9729,
    eTFM_LINEAR_MIPMAP_LINEAR = 9987,
};

enum eSceneMode
{
    eSM_GLOBE = 1,
    eSM_PLANE = 2,
};

// How the camera's view is drawn. eDM_2D is a flat 2-D view: the plane map seen straight from
// above, whose visible rectangle (the render bounds) is all there is to see. eDM_3D is every
// other view: the globe always, and the plane map unless the application declares it flat.
// Effects that depend on it: the tile overlays (hill shading, tiling) build their pass only
// in eDM_3D; dynamic winds take the engine's render bounds as they are only in eDM_2D.
enum eDimensionMode
{
    eDM_2D = 0,
    eDM_3D = 1,
};

// Projection type codes of the projection library.
enum tagPJObjectType
{
    PJ_PLATE_CARREE = 43000,
    PJ_MERCATOR = 43004,
    PJ_ALBERS = 43007,
    PJ_LAMBERT_CONFORMAL = 43020,
    PJ_SPHERE_MERCATOR = 43045,
};

// Effects open files for reading with direction 2.
enum eStreamDirection
{
    eSD_READ = 2,
    eSD_WRITE = 4,
};

// Pixel format codes of rasters.
enum ePixelFormat
{
    ePF_UBYTE = 8,
    ePF_SHORT = 16,
    ePF_USHORT = 17,
    ePF_FLOAT = 3200,
};

} // namespace KYR
