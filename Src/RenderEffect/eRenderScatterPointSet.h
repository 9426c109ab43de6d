// Up to a million geographic points drawn as screen-facing icons in one draw call. Each
// point is a 20-byte record in a dynamic vertex buffer; its icon is a tile of one atlas
// picture. Icon categories are switched through a small float texture, selected points are
// redrawn from a second buffer with the highlight icon, and points can be picked by a ray.
#pragma once
#include "eChoiceObject.h"
#include "eRenderable.h"
#include "eShared.h"
#include "eString.h"
#include <memory>
#include <utility>
#include <vector>

namespace KYR
{

class eVertexData;

// Receives the user data, the selected slots and the selected points.
typedef bool (*ScatterHitCallBack)(void*, std::vector<int>&, std::vector<eScatterPoint>&);

class eRenderScatterPointSet : public eRenderable
{
public:
    eRenderScatterPointSet();
    explicit eRenderScatterPointSet(int gridSize);
    // Copies share the point and highlight buffers, both textures and the staging picture;
    // the last holder of each frees it. Category flags, slots and selection are copied.
    eRenderScatterPointSet(eRenderScatterPointSet const&) = default;
    eRenderScatterPointSet& operator=(eRenderScatterPointSet const&) = default;
    ~eRenderScatterPointSet() override;

    unsigned char Initialize(eRenderEngine*) override;
    unsigned char UnInitialize(eRenderEngine*) override;
    unsigned char Reset(eRenderEngine*) override;
    unsigned char Update(eRenderEngine*) override;
    unsigned char Render(eRenderEngine*, eRenderSystem*, eCamera*, eViewport*) override;
    unsigned char Query(eRenderEngine*, eCamera*, eQueryFilter*, double&) override;
    unsigned char UpdateRenderQueue(eRenderEngine*, eCamera*, eViewport*, eRenderQueue*) override;

    // The slot of the new point, or -1 when the pool is full.
    int AddScatterPoint(eScatterPoint& point);
    // Rewrites a slot; for a selected slot point.id becomes the choice type.
    void UpDateScatterPoint(int slot, eScatterPoint& point);
    void DeleteScatterPoint(int slot);

    void SetScatterVisible(int category, bool visible);
    bool GetScatterVisible(int category);
    void SetScatterPointIsVisible(int slot, bool visible);
    void SetScatterPointIsChoice(int slot, bool choice);
    void DeleteChoicePoint(int slot);
    void DeleteChoiceData();
    void SetChoiceType(int type) { m_nChoiceType = type; }
    int GetChoiceType() { return m_nChoiceType; }
    std::vector<eChoiceObject> GetChoicePoint() { return m_arChoicePoints; }

    void SetHitCallBackFun(ScatterHitCallBack fn, void* user);
    void SendHitScatterPoint(std::vector<int> slots, std::vector<eScatterPoint> points);

    void SetStylePicture(eString& file);
    eString GetStylePicture() { return m_strStylePicture; }
    void SetScatterPointSize(double size) { m_dPointSize = size; }
    double GetScatterPointSize() { return m_dPointSize; }
    void SetPoolSize(int size) { m_nPoolSize = size; }
    int GetPoolSize() { return m_nPoolSize; }
    void SetSpatialRefType(int type) { m_nSpatialRefType = type; }
    int GetSpatialRefType() { return m_nSpatialRefType; }

protected:
    void ConvertByte(eScatterPoint const& point, std::vector<unsigned char>& bytes);
    void CreateTexture();
    void ReCreatVisibleTexture();
    void AddChoiceScatterPoint(int slot, eScatterPoint& point);
    bool GetChoiceScatterPoint(int slot, int& type);
    bool GetScatterPoint(int slot, eScatterPoint& point);
    void CreateBuffer();

    int m_nGridSize;
    int m_nPoolSize;
    int m_nPointCount;
    int m_nSpatialRefType;
    int m_nChoiceType;
    eShared<eVertexData> m_pVertexData;
    eShared<eVertexData> m_pChoiceVertexData;
    unsigned char m_bInitialized;
    unsigned char m_bVisibleDirty;
    int m_nReserved;
    double m_dPointSize;
    eString m_strStylePicture;
    eSharedName m_nStyleTexture;
    eSharedName m_nVisibleTexture;
    int m_nIdBytes;
    int m_nPositionBytes;
    std::vector<int> m_arFreeSlots;
    std::vector<int> m_arCategoryVisible;
    std::vector<eChoiceObject> m_arChoicePoints;
    std::vector<std::pair<int, int>> m_arChoiceIndex;
    ScatterHitCallBack m_pfnHitCallBack;
    void* m_pHitUserData;
    eShared<float[]> m_pVisiblePixels;
    std::vector<unsigned char> m_arBlankRecord;

private:
    eVertexData* NewPointStore();
    void ReleaseResources();
    // Byte offset of a slot inside a buffer, or -1 when it cannot lie in one.
    int SlotOffset(eVertexData* store, int slot);
    void WriteRecord(eVertexData* store, int slot, std::vector<unsigned char> const& bytes);
    // Reads the first `count` records of the point buffer (fewer when the buffer is
    // shorter) and returns how many were read.
    int ReadRecords(int count, std::unique_ptr<unsigned char[]>& bytes);
    void Unpack(unsigned char const* record, eScatterPoint& point);
    int FindChoiceIndex(int slot);
    void SelectSlot(int slot, eScatterPoint point);
    void NotifySelection();
};

} // namespace KYR
