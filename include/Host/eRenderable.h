// Base class of everything the engine draws, and the factory a library announces
// itself with. Virtual slots are in the engine's fixed order.
#pragma once
#include "eBase.h"
#include "eBoundingBox.h"
#include "eString.h"
#include "eVector3.h"

namespace KYR
{

class eRenderEngine;
class eRenderSystem;
class eCamera;
class eViewport;
class eCanvas;
class eRenderQueue;

// Host-side parameters handed to Process; no effect reads them.
struct eHostParam
{
    int m_nKind = 0;
    void* m_pData = nullptr;
};

// Picking request: a ray in world coordinates.
struct eQueryFilter
{
    eVector3T<double> m_vOrigin;
    eVector3T<double> m_vDirection; // unit length
    unsigned char m_bKeep = 0;      // keep the previous selection
};

class eRenderable
{
public:
    enum Type
    {
        eRT_NONE = 0x0,
        eRT_HOST_DEFAULT = 0x1,
        eRT_COMPOSE = 0x80,
        eRT_PART = 0x81,
        eRT_LINE_PART = 0x82,
        eRT_FILL_PART = 0x83,
        eRT_LABEL_PART = 0x84,
        eRT_PICTURE_PART = 0x85,
        eRT_SET = 0x200,
        eRT_LIST_SET = 0x201,
        eRT_GROUP_DENSITY_SET = 0x202,
        eRT_WORLD_LIST_DENSITY_SET = 0x203,
        eRT_TRACE_SET = 0x208,
        eRT_POINT_TRACE_SET = 0x209,
        eRT_LINE_TRACE_SET = 0x20A,
        eRT_LIST_LINE_TRACE_SET = 0x20B,
        eRT_GROUP_LINE_TRACE_SET = 0x20C,
        eRT_CYCLE_SET = 0x212,
        eRT_POINT_CYCLE_SET = 0x213,
        eRT_WORLD_POINT_CYCLE_SET = 0x214,
        eRT_SYS_LINE_CYCLE_SET = 0x215,
        eRT_LINE_GROW_SET = 0x226,
        eRT_SHADING = 0x30C,
        eRT_HILL_SHADING = 0x30D,
        eRT_TILING = 0x30E,
        eRT_NIGHT_LIGHT = 0x402,
        eRT_SURFACE_GLOBE = 0x403,
        eRT_GLOBE_HALO = 0x404,
        eRT_GROW_WIND = 0x405,
        eRT_VISUAL_GLOBE = 0x406,
        eRT_RENDER_OBJECT = 0x880,
        eRT_CONE = 0x8C0,
        eRT_LINE = 0x8C6,
        eRT_POLY = 0x8C7,
        eRT_DATASET_OBJECT = 0x8D0,
        eRT_LIGHT_POS = 0x8D1,
        eRT_ISO_SURFACE_3D = 0x8D1, // shares its value with eRT_LIGHT_POS
    };

    eRenderable();
    eRenderable(eRenderable const&) = default;
    eRenderable& operator=(eRenderable const&) = default;

    // Slots 1 to 22.
    virtual ~eRenderable();
    virtual Type GetType();
    virtual unsigned char Initialize(eRenderEngine*);
    virtual unsigned char UnInitialize(eRenderEngine*);
    virtual unsigned char Reset(eRenderEngine*);
    virtual unsigned char Process(eHostParam*);
    virtual unsigned char Update(eRenderEngine*);
    virtual unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*);
    virtual unsigned char Refresh(eRenderEngine*, eCamera*);
    virtual unsigned char Create(eCamera*, double, eCanvas*);
    virtual unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&);
    virtual double GetSquaredViewDepth(eCamera*);
    virtual unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*);
    virtual void SetModelBoundingBox(eBoundingBoxT<double>&);
    virtual eBoundingBoxT<double>& GetModelBoundingBox();
    virtual void SetWorldBoundingBox(eBoundingBoxT<double>&);
    virtual eBoundingBoxT<double>& GetWorldBoundingBox();
    virtual unsigned char AutoTrack();
    virtual int GetID();
    virtual void SetID(int);
    virtual unsigned char PreRender();
    virtual unsigned char PostRender();

    unsigned char IsVisible() const { return m_bVisible; }

    unsigned char m_bVisible;
    unsigned int m_nRenderQueueId;

protected:
    int m_nID;
    eBoundingBoxT<double> m_ModelBoundingBox;
    eBoundingBoxT<double> m_WorldBoundingBox;
};

class eRenderableFactory
{
public:
    eRenderableFactory() {}
    eRenderableFactory(eRenderableFactory const&) {}
    eRenderableFactory& operator=(eRenderableFactory const&) { return *this; }
    virtual ~eRenderableFactory() {}
    virtual eRenderable* CreateRenderable(int) = 0;
    virtual unsigned char IsSupport(int) const = 0;
    virtual eString GetName() const = 0;
};

} // namespace KYR
