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
    // Writes the first `vertices` vertices of the store into slot `slot` of its hardware
    // buffer, each slot being `slotVertices` long. False without a buffer or outside it.
    static unsigned char UploadSlot(eVertexData* data, int slot, int slotVertices, int vertices);
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
        unsigned long long Stamp() const { return m_nStamp; }

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

    // The local floats of one record's positions, converted once under a stamp and reused
    // for as long as the stamp, the record's kind and its position array stay the same.
    // Only the stretches that windows have shown are converted. Copies start empty: the
    // floats belong to the positions of the object that made them, not to the record's
    // value. A record whose positions are edited in place must be handed back to its set
    // (which calls Invalidate) to be converted again.
    class eLocalPositions
    {
    public:
        eLocalPositions()
            : m_nStamp(0), m_pSource(nullptr), m_nSize(0), m_nKind(0), m_nBegin(0), m_nEnd(0),
              m_bRising(0)
        {
        }
        eLocalPositions(eLocalPositions const&) : eLocalPositions() {}
        eLocalPositions& operator=(eLocalPositions const&)
        {
            Invalidate();
            return *this;
        }

        void Invalidate() { m_nStamp = 0; }
        // Room for `count` positions, so that converting them later allocates nothing.
        void Reserve(size_t count)
        {
            if (m_arLocal.size() < count)
                m_arLocal.resize(count);
        }
        // Makes the floats belong to `positions` of `kind` under `stamp`, dropping what was
        // converted otherwise. Returns whether the times never fall along the array (read
        // once per binding), which lets a window search start where the last one ended.
        unsigned char Bind(unsigned long long stamp, int kind,
                           std::vector<eVector4T<double>> const& positions);
        // Converts positions first..last (inclusive) of the bound array with
        // convert(position) where not yet done, and returns the floats of `first`.
        template <typename Convert>
        eVector4T<float> const* Prepare(std::vector<eVector4T<double>> const& positions, int first,
                                        int last, Convert convert);
        // Asks for `count` converted floats from `first` on ahead of their use.
        void Prefetch(int first, int count) const
        {
            int end = first + count < m_nEnd ? first + count : m_nEnd;
            if (first < m_nBegin)
                first = m_nBegin;
            char const* p = reinterpret_cast<char const*>(m_arLocal.data());
            for (int k = first; k < end; k += 4) // four floats of 16 bytes a cache line
                __builtin_prefetch(p + (size_t)k * sizeof(eVector4T<float>));
        }
        // The floats of `p` when it lies in the converted stretch of the array they were
        // made from under `stamp`; null otherwise.
        eVector4T<float> const* Find(unsigned long long stamp, eVector4T<double> const* p) const
        {
            if (stamp != m_nStamp || !m_pSource || p < m_pSource + m_nBegin ||
                p >= m_pSource + m_nEnd)
                return nullptr;
            return &m_arLocal[(size_t)(p - m_pSource)];
        }

    private:
        std::vector<eVector4T<float>> m_arLocal;
        unsigned long long m_nStamp;
        eVector4T<double> const* m_pSource;
        size_t m_nSize;
        int m_nKind;
        int m_nBegin, m_nEnd; // the converted stretch
        unsigned char m_bRising;
    };
};

template <typename Convert>
eVector4T<float> const*
eDataSetFrame::eLocalPositions::Prepare(std::vector<eVector4T<double>> const& positions, int first,
                                        int last, Convert convert)
{
    int end = last + 1;
    if (end <= m_nBegin || first >= m_nEnd)
        m_nBegin = m_nEnd = first; // no overlap: start a new stretch
    for (int k = first; k < m_nBegin; ++k)
        m_arLocal[(size_t)k] = convert(positions[(size_t)k]);
    for (int k = m_nEnd > first ? m_nEnd : first; k < end; ++k)
        m_arLocal[(size_t)k] = convert(positions[(size_t)k]);
    if (first < m_nBegin)
        m_nBegin = first;
    if (end > m_nEnd)
        m_nEnd = end;
    return &m_arLocal[(size_t)first];
}

} // namespace KYR
