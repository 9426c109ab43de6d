// Shared pieces of the moving-point data sets: the anchor and its local frame, the
// conversions of timed positions, the sliding window over a timed path, the ring of slots
// and the upload of one slot's range, the technique, the clock uniforms and the binding of
// a set's vertex buffer. The set classes keep their own fields and call these with them
// (on plain position arrays), so that every family member finds, converts and draws alike.
#pragma once
#include "eMatrix4.h"
#include "ePoint.h"
#include "eString.h"
#include "eVector3.h"
#include "eVector4.h"
#include <vector>

namespace KYR
{

class eCamera;
class eCanvas;
class eHardwareVertexBuffer;
class eRenderEngine;
class eRenderProgram;
class eTechnique;
class eTexture;
class eVertexData;

class eDataSetFrame
{
public:
    // Program-specific uniform roles shared by the programs of the data sets, as indices
    // into eShaderUniform::m_nCustom. A program lists them first in its role line and
    // adds its own from eR_OWN on.
    enum eRole
    {
        eR_RESERVED = 0,     // reserved float, always 0
        eR_EARTH_PIXELS = 1, // size of the whole earth in pixels
        eR_CUR_TIME = 2,
        eR_START_TIME = 3,
        eR_END_TIME = 4,
        eR_TRACE_TIME = 5, // length of the tail
        eR_OPACITY = 6,
        eR_OWN = 7,
    };

    // The roles that programs of sets with two-float world positions add after the shared
    // ones: the reference centre split as the positions are.
    enum eWorldRole
    {
        eR_REF_HIGH = eR_OWN,
        eR_REF_LOW = eR_OWN + 1,
    };

    // Scene mode of the camera; the globe when there is none.
    static int SceneMode(eCamera* camera);

    // The anchor of a set: its world position (w = 0) and, on the globe, the local frame
    // Ry(longitude) * Rx(-latitude) at its geographic position; in flat mode `local` stays
    // as it is. A local anchor (kind 0) has no geographic position: on the globe it takes
    // (0, 0), reported through Eassert("false", reportFile, reportLine) unless reportFile
    // is null.
    static void CreateAnchor(eCamera* camera, eCanvas* canvas, int kind,
                             eVector3T<double> const& position, char const* reportFile,
                             int reportLine, eVector4T<double>& world, eMatrix4T<float>& local);

    // World position of p read as coordinate kind `kind` (0 local to the anchor, 1
    // geographic degrees with height in metres, others map coordinates). w is p.w.
    static eVector4T<double> PositionToWorld(eCamera* camera, eCanvas* canvas,
                                             eMatrix4T<float> const& local,
                                             eVector4T<double> const& anchor, int kind,
                                             eVector4T<double> const& p);
    // p as floats in the anchor's local frame; the large numbers cancel in double first.
    static eVector4T<float> PositionToLocal(eCamera* camera, eCanvas* canvas,
                                            eMatrix4T<float> const& local,
                                            eVector4T<double> const& anchor, int kind,
                                            eVector4T<double> const& p);
    // Geographic position of a non-local kind (kind 1 as it stands, others through
    // MapToGeo). Kind 0 has none and gives (0, 0); the caller reports it if it must.
    static ePoint2D PositionToGeo(eCanvas* canvas, int kind, double x, double y);

    // The local frame at a geographic point: Ry(longitude) * Rx(-latitude).
    static eMatrix4T<float> LocalFrame(ePoint2D const& geo);

    // Bounds of the sliding window at the clock: t0 = curTime - traceTime raised to
    // startTime, t1 = curTime lowered to endTime.
    static void WindowTimes(float curTime, float traceTime, float startTime, float endTime,
                            float& t0, float& t1);
    // The window of a timed path (times rising). From `from`, find the first position
    // above t0: `first` is the one before it (0 if it is the very first). From `first`
    // on, `last` is the first position above t1. Both start at -1. True if last is above 0.
    // With hint >= 0 the caller vouches that the times never fall from `from` on: `last`
    // is then sought from the hint outwards, with the same result as the walk from first.
    static unsigned char FindWindow(eVector4T<double> const* positions, int count, int from,
                                    float t0, float t1, int& first, int& last, int hint = -1);
    // Moves a window (firstIndex, windowCount) to the times t0..t1. False, leaving it as
    // it is, when it already reaches the end of the path or no position lies after t1;
    // otherwise the window runs from one position before t0 to the first one after t1,
    // so that a head can be placed between its last two positions. With `rising` the
    // caller vouches that the times never fall, and the end is sought from the old one.
    static unsigned char MoveWindow(eVector4T<double> const* positions, int count, float t0,
                                    float t1, int& firstIndex, int& windowCount,
                                    unsigned char rising = 0);

    // The ring rule of a fixed pool. While `count` is below the pool size a record takes
    // slot `count`; if update(slot) fails the slot is taken all the same (its record waits
    // for Initialize), and on success update raises `count` itself. Once full, `head`
    // walks round and the oldest record is overwritten, moving on only after a success.
    template <typename Update>
    static void AddToRing(int poolSize, int& count, int& head, Update update)
    {
        if (count < poolSize)
        {
            if (!update(count))
                ++count;
            return;
        }
        head = count > 0 ? head % count : 0;
        if (update(head))
            ++head;
    }

    // A dynamic hardware buffer of `vertices` zero-filled vertices for the store, made
    // unless the store has one already; false if it could not be allocated.
    static unsigned char CreateSlotBuffer(eVertexData* data, long long vertices);
    class eBufferShadow;
    // Writes the first `vertices` vertices of the store into slot `slot` of its hardware
    // buffer, each slot being `slotVertices` long. False without a buffer or outside it.
    // With a shadow of the buffer the bytes go through it (see eBufferShadow).
    static unsigned char UploadSlot(eVertexData* data, int slot, int slotVertices, int vertices,
                                    eBufferShadow* shadow = nullptr);
    // Vertices of the store's hardware buffer (0 without one).
    static int BufferVertices(eVertexData* data);

    // One pass with the program, alpha blending, the depth check as given, no depth
    // write, no bias, no lighting and line width 2.
    static eTechnique* CreateTechnique(eString const& program, unsigned char depthTest);

    // The seven clock floats in their fixed order: reserved, lighting flag, earth size
    // in pixels, current, start and end time, tail length.
    static void SetClockUniforms(eRenderEngine* engine, eRenderProgram* program, float curTime,
                                 float startTime, float endTime, float traceTime);
    // World matrix T(anchor - reference centre) * local, the difference taken in double.
    static void SetAnchorMatrix(eCamera* camera, eRenderProgram* program,
                                eVector4T<double> const& anchor, eMatrix4T<float> const& local);

    // The camera's reference centre as high and low floats (eR_REF_HIGH, eR_REF_LOW), split
    // as two-float positions are, so that a program subtracting high from high and low from
    // low keeps the difference in full precision.
    static void SetReferenceCentre(eCamera* camera, eRenderProgram* program);

    // Binds the hardware buffer of the store and points each element at it.
    static unsigned char BindVertexData(eVertexData* data);
    static void UnbindVertexData(eVertexData* data);
    // Also makes the buffer readable by the programs as storage block 0, so a vertex can
    // read the following position of its track (only inside the range its draw names).
    static void BindTrackStorage(eVertexData* data);
    static void UnbindTrackStorage();

    // Loads an image file into a clamped, linearly filtered texture; null on failure.
    static eTexture* LoadTexture(eString const& path);

    // What the local floats of a position depend on besides the position and its kind:
    // the scene mode, the coordinate system with its projection, and the anchor with its
    // frame. Refresh compares them with the last ones and takes a new stamp, unique in the
    // process, when any differs; converted positions carry the stamp they were made under.
    class eConversionKey
    {
    public:
        eConversionKey();
        unsigned long long Refresh(eCamera* camera, eCanvas* canvas,
                                   eVector4T<double> const& anchor, eMatrix4T<float> const& local);

    private:
        struct eInputs
        {
            double m_dAnchor[4];
            double m_dProjection[4]; // central meridian, origin latitude, standard parallels
            float m_fLocal[16];
            void const* m_pCoordSys;
            int m_nSceneMode;
            int m_nCoordSysMode;
            int m_nProjection;
        };
        eInputs m_Inputs;
        unsigned long long m_nStamp;
    };

    // The local floats of the window each slot last showed, slot by slot in one block. A
    // window that moves on keeps the floats of the positions it still shows and converts
    // only those that enter it; a slot whose stamp, record, positions or kind differ from
    // what it was bound to starts again. Position p of a record lies at p modulo the slot's
    // length, so that nothing moves while a window slides. Shared by the copies of a set
    // with its vertex store, whose slots it follows.
    class eWindowCache
    {
    public:
        eWindowCache() : m_nSlotPositions(0) {}
        eWindowCache(eWindowCache const&) = delete;
        eWindowCache& operator=(eWindowCache const&) = delete;

        // Room for `slots` windows of up to `slotPositions` positions; all forgotten.
        void Reset(int slots, int slotPositions);
        // The record of a slot changed in place: its floats are converted again.
        void Forget(int slot);
        // Binds a slot to a record (any object that stands for it) with its positions and
        // kind, under `stamp`. Returns whether the record's times never fall (read once per
        // binding), which lets a window search start where the last one ended.
        unsigned char Bind(int slot, unsigned long long stamp, void const* record,
                           std::vector<eVector4T<double>> const& positions, int kind);
        // Makes the floats of positions first..first+count-1 of the bound slot ready,
        // converting with convert(position) those the slot does not hold. False when the
        // window is longer than a slot (nothing is kept then).
        template <typename Convert>
        unsigned char Prepare(int slot, std::vector<eVector4T<double>> const& positions, int first,
                              int count, Convert convert);
        // Whether the window first..first+count-1 that the slot last prepared is still the
        // one MoveWindow would find for t0..t1 from there, told from the times of its two
        // ends kept at Prepare: only for times that never fall, and a window short of the
        // path's end. Reads none of the record's positions.
        unsigned char Holds(int slot, std::vector<eVector4T<double>> const& positions, int first,
                            int count, float t0, float t1) const;
        // The floats of position `index` of a prepared window.
        eVector4T<float> const* At(int slot, int index) const
        {
            return &m_arFloats[(size_t)slot * m_nSlotPositions +
                               (size_t)(index % m_nSlotPositions)];
        }
        // Writes the floats of the prepared window, in order, each `repeat` times in a row.
        void Write(int slot, int first, int count, int repeat, eVector4T<float>* out) const;
        // Asks for the floats of a slot's window from position `first` ahead of their use.
        void Prefetch(int slot, int first) const;

    private:
        struct eSlot
        {
            unsigned long long m_nStamp; // 0: nothing bound
            void const* m_pRecord;
            eVector4T<double> const* m_pSource;
            size_t m_nSize;
            int m_nKind;
            int m_nFirst, m_nCount; // the positions held
            double m_dTimes[4];     // of positions first, first + 1, last - 1 and last
            unsigned char m_bRising;
        };
        std::vector<eSlot> m_arSlots;
        std::vector<eVector4T<float>> m_arFloats;
        int m_nSlotPositions;
    };
};

// The bytes of a set's hardware buffer, kept on the processor side as well, so that the
// windows of many slots go up in one write of the whole range they span: the bytes between
// the windows are written again as the buffer already holds them. Each write costs the
// driver a fixed price besides its bytes, far more than a short window's own. Outside a
// batch every write goes up at once; inside one, writes gather while each starts near the
// end of the last and the range stays modest, and EndBatch sends the rest. Shared by the
// copies of a set with its vertex store.
class eDataSetFrame::eBufferShadow
{
public:
    eBufferShadow() : m_nDirtyBegin(0), m_nDirtyEnd(0), m_nBatches(0) {}
    eBufferShadow(eBufferShadow const&) = delete;
    eBufferShadow& operator=(eBufferShadow const&) = delete;

    // The size of the buffer, zero-filled as the buffer is made.
    void Reset(size_t bytes);
    // Whether a set whose slots hold `slotBytes` each is better served with a shadow: a
    // write of a short slot costs more in the driver than its bytes do.
    static bool Pays(size_t slotBytes) { return slotBytes <= 2048; }
    // Copies `bytes` from `data` to `offset` of the buffer. False outside it.
    unsigned char Write(eHardwareVertexBuffer* buffer, size_t offset, size_t bytes,
                        void const* data);
    // The shadow's `bytes` at `offset`, for the caller to fill and then Commit. Null
    // outside the buffer.
    unsigned char* Place(eHardwareVertexBuffer* buffer, size_t offset, size_t bytes);
    // Sends what waits, unless a batch is open.
    void Commit(eHardwareVertexBuffer* buffer)
    {
        if (m_nBatches == 0)
            Flush(buffer);
    }
    void BeginBatch() { ++m_nBatches; }
    void EndBatch(eHardwareVertexBuffer* buffer);

private:
    void Flush(eHardwareVertexBuffer* buffer);

    std::vector<unsigned char> m_arBytes;
    size_t m_nDirtyBegin, m_nDirtyEnd; // what waits to go up
    int m_nBatches;
};

template <typename Convert>
unsigned char eDataSetFrame::eWindowCache::Prepare(int slot,
                                                   std::vector<eVector4T<double>> const& positions,
                                                   int first, int count, Convert convert)
{
    if (slot < 0 || slot >= (int)m_arSlots.size() || count <= 0 || count > m_nSlotPositions ||
        first < 0 || first + count > (int)positions.size())
        return 0;
    eSlot& held = m_arSlots[(size_t)slot];
    if (held.m_nStamp == 0)
        return 0;
    // Positions of the old window that the new one still shows stay where they are.
    int keepBegin = first > held.m_nFirst ? first : held.m_nFirst;
    int keepEnd = first + count < held.m_nFirst + held.m_nCount ? first + count
                                                                : held.m_nFirst + held.m_nCount;
    if (keepEnd < keepBegin)
        keepBegin = keepEnd = first;
    eVector4T<float>* floats = &m_arFloats[(size_t)slot * m_nSlotPositions];
    for (int p = first; p < keepBegin; ++p)
        floats[p % m_nSlotPositions] = convert(positions[(size_t)p]);
    for (int p = keepEnd; p < first + count; ++p)
        floats[p % m_nSlotPositions] = convert(positions[(size_t)p]);
    held.m_nFirst = first;
    held.m_nCount = count;
    int last = first + count - 1;
    held.m_dTimes[0] = positions[(size_t)first].w;
    held.m_dTimes[1] = positions[(size_t)(first + 1 <= last ? first + 1 : last)].w;
    held.m_dTimes[2] = positions[(size_t)(last - 1 >= first ? last - 1 : first)].w;
    held.m_dTimes[3] = positions[(size_t)last].w;
    return 1;
}

} // namespace KYR
