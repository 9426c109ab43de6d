#include "eTriangulator.h"
#include "eBase.h"
#include <GL/glu.h>
#include <algorithm>
#include <cmath>
#include <cstdint>

namespace KYR
{

namespace
{

double Cross(ePoint2D const& a, ePoint2D const& b, ePoint2D const& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

// Number of points to use: a closing point equal to the first is left out.
int OpenCount(ePoint2D const* p, int n)
{
    while (n > 1 && p[n - 1] == p[0])
        --n;
    return n;
}

// The polygon as a ring of point indices without repeated neighbours.
std::vector<int> DistinctRing(ePoint2D const* p, int n)
{
    std::vector<int> ring;
    ring.reserve((size_t)n);
    for (int i = 0; i < n; ++i)
        if (ring.empty() || p[ring.back()] != p[i])
            ring.push_back(i);
    while (ring.size() > 1 && p[ring.back()] == p[ring.front()])
        ring.pop_back();
    return ring;
}

// Squared size of the polygon, to scale the tolerance of orientation tests.
double ScaleSquared(ePoint2D const* p, std::vector<int> const& ring)
{
    double x0 = p[ring[0]].x, x1 = x0, y0 = p[ring[0]].y, y1 = y0;
    for (int i : ring)
    {
        x0 = std::min(x0, p[i].x);
        x1 = std::max(x1, p[i].x);
        y0 = std::min(y0, p[i].y);
        y1 = std::max(y1, p[i].y);
    }
    return (x1 - x0) * (x1 - x0) + (y1 - y0) * (y1 - y0);
}

// Point q inside or on the counter-clockwise triangle (a, b, c).
bool InTriangle(ePoint2D const& a, ePoint2D const& b, ePoint2D const& c, ePoint2D const& q,
                double eps)
{
    return Cross(a, b, q) >= -eps && Cross(b, c, q) >= -eps && Cross(c, a, q) >= -eps;
}

template <class Index>
void PushTriangle(ePoint2D const* p, int a, int b, int c, std::vector<Index>& out)
{
    if (Cross(p[a], p[b], p[c]) < 0.0)
        std::swap(b, c);
    out.push_back((Index)a);
    out.push_back((Index)b);
    out.push_back((Index)c);
}

bool EarClip(ePoint2D const* p, int count, std::vector<unsigned short>& out)
{
    out.clear();
    if (!p || count < 3)
        return false;
    if (count > 65536)
    {
        Eassert("count <= 65536", __FILE__, __LINE__);
        return false;
    }
    int n = OpenCount(p, count);
    std::vector<int> v = DistinctRing(p, n);
    if (v.size() < 3)
        return false;
    double area = eTriangulator::Area(p, n);
    double scale2 = ScaleSquared(p, v);
    double eps = 1e-12 * scale2;
    if (!(std::fabs(area) > eps)) // also catches NaN coordinates
        return false;
    if (area < 0.0)
        std::reverse(v.begin(), v.end());
    // Drop collinear corners first, so that none of them ends up inside a triangle fan
    // by chance of the visiting order.
    for (bool changed = true; changed && v.size() > 3;)
    {
        changed = false;
        for (size_t k = 0; k < v.size() && v.size() > 3;)
        {
            size_t m = v.size();
            if (std::fabs(Cross(p[v[(k + m - 1) % m]], p[v[k]], p[v[(k + 1) % m]])) <= eps)
            {
                v.erase(v.begin() + (long)k);
                changed = true;
            }
            else
                ++k;
        }
    }

    // Only reflex (or flat) corners can lie inside an ear of a simple polygon, so the
    // ear test looks at those alone; a convex polygon then needs no search at all.
    std::vector<char> reflex((size_t)n, 0);
    size_t reflexCount = 0;
    auto classify = [&](size_t k)
    {
        size_t m = v.size();
        int q = v[k];
        char r = Cross(p[v[(k + m - 1) % m]], p[q], p[v[(k + 1) % m]]) <= eps ? 1 : 0;
        if (r != reflex[(size_t)q])
        {
            reflexCount = r ? reflexCount + 1 : reflexCount - 1;
            reflex[(size_t)q] = r;
        }
    };
    for (size_t k = 0; k < v.size(); ++k)
        classify(k);
    // Removes corner i, updates its two neighbours and returns the index of the one before.
    auto removeCorner = [&](size_t i)
    {
        if (reflex[(size_t)v[i]])
        {
            reflex[(size_t)v[i]] = 0;
            --reflexCount;
        }
        v.erase(v.begin() + (long)i);
        size_t m = v.size();
        size_t before = (i + m - 1) % m;
        classify(before);
        classify(i % m);
        return before;
    };

    bool clean = true;
    size_t misses = 0; // corners tried since the last removal
    size_t i = 0;
    while (v.size() > 3)
    {
        size_t m = v.size();
        if (i >= m)
            i = 0;
        int a = v[(i + m - 1) % m], b = v[i], c = v[(i + 1) % m];
        double turn = Cross(p[a], p[b], p[c]);
        if (std::fabs(turn) <= eps)
        {
            // A corner made flat by earlier clipping: drop it without a triangle.
            removeCorner(i);
            misses = 0;
            continue;
        }
        bool ear = turn > 0.0;
        for (size_t k = 0; ear && reflexCount > 0 && k < m; ++k)
        {
            int q = v[k];
            if (!reflex[(size_t)q] || q == a || q == c || p[q] == p[a] || p[q] == p[b] ||
                p[q] == p[c])
                continue;
            if (InTriangle(p[a], p[b], p[c], p[q], eps))
                ear = false;
        }
        if (!ear && misses >= m)
        {
            // A full round without an ear: the polygon crosses itself. Clip the most
            // convex corner anyway so the output still covers what it can.
            clean = false;
            double bestTurn = -1e300;
            for (size_t k = 0; k < m; ++k)
            {
                double t = Cross(p[v[(k + m - 1) % m]], p[v[k]], p[v[(k + 1) % m]]);
                if (t > bestTurn)
                {
                    bestTurn = t;
                    i = k;
                }
            }
            a = v[(i + m - 1) % m];
            b = v[i];
            c = v[(i + 1) % m];
            ear = true;
        }
        if (ear)
        {
            PushTriangle(p, a, b, c, out);
            // Go on from the corner before, which has just changed.
            i = removeCorner(i);
            misses = 0;
        }
        else
        {
            ++misses;
            ++i;
        }
    }
    if (std::fabs(Cross(p[v[0]], p[v[1]], p[v[2]])) > eps)
        PushTriangle(p, v[0], v[1], v[2], out);
    return clean && !out.empty();
}

// State shared with the GLU callbacks.
struct TessState
{
    ePoint2D const* points = nullptr;
    std::vector<double> coords;    // x, y, z of each point, alive until the polygon ends
    std::vector<unsigned int> ids; // the index of each point, passed as vertex data
    std::vector<unsigned int>* out = nullptr;
    unsigned int pending[3] = {0, 0, 0};
    int pendingCount = 0;
    bool failed = false;
};

void GLAPIENTRY TessBegin(GLenum, void*) {}

void GLAPIENTRY TessEdgeFlag(GLboolean, void*)
{
    // Present only so that GLU emits separate triangles instead of fans and strips.
}

void GLAPIENTRY TessVertex(void* vertex, void* data)
{
    TessState* s = static_cast<TessState*>(data);
    s->pending[s->pendingCount++] = *static_cast<unsigned int*>(vertex);
    if (s->pendingCount == 3)
    {
        PushTriangle(s->points, (int)s->pending[0], (int)s->pending[1], (int)s->pending[2],
                     *s->out);
        s->pendingCount = 0;
    }
}

void GLAPIENTRY TessCombine(GLdouble coords[3], void* vertexData[4], GLfloat weight[4],
                            void** outData, void* data)
{
    TessState* s = static_cast<TessState*>(data);
    // GLU also merges coincident points through here; that is harmless. A new point
    // elsewhere is a crossing, which the index output cannot express.
    unsigned int* best = nullptr;
    double bestDist = 0.0;
    for (int k = 0; k < 4; ++k)
    {
        if (!vertexData[k] || weight[k] <= 0.0f)
            continue;
        unsigned int* id = static_cast<unsigned int*>(vertexData[k]);
        ePoint2D const& q = s->points[*id];
        double d = (q.x - coords[0]) * (q.x - coords[0]) + (q.y - coords[1]) * (q.y - coords[1]);
        if (!best || d < bestDist)
        {
            best = id;
            bestDist = d;
        }
    }
    if (!best)
    {
        best = static_cast<unsigned int*>(vertexData[0]);
        bestDist = 1.0;
    }
    if (bestDist != 0.0)
        s->failed = true;
    *outData = best;
}

void GLAPIENTRY TessError(GLenum, void* data)
{
    static_cast<TessState*>(data)->failed = true;
}

} // namespace

double eTriangulator::Area(ePoint2D const* points, int count)
{
    if (!points || count < 3)
        return 0.0;
    double sum = 0.0;
    for (int i = 0, j = count - 1; i < count; j = i++)
        sum += points[j].x * points[i].y - points[i].x * points[j].y;
    return 0.5 * sum;
}

bool eTriangulator::Process(ePoint2D const* points, int count, std::vector<unsigned short>& indices)
{
    return EarClip(points, count, indices);
}

bool eTriangulator::Triangulate(ePoint2D const* points, int count,
                                std::vector<unsigned short>& indices)
{
    return EarClip(points, count, indices);
}

bool eTriangulator::Tesselate(ePoint2D const* points, int count, std::vector<unsigned int>& indices)
{
    indices.clear();
    if (!points || count < 3)
        return false;
    int n = OpenCount(points, count);
    std::vector<int> ring = DistinctRing(points, n);
    if (ring.size() < 3)
        return false;

    TessState s;
    s.points = points;
    s.out = &indices;
    s.coords.resize(ring.size() * 3);
    s.ids.resize(ring.size());
    for (size_t k = 0; k < ring.size(); ++k)
    {
        s.coords[k * 3 + 0] = points[ring[k]].x;
        s.coords[k * 3 + 1] = points[ring[k]].y;
        s.coords[k * 3 + 2] = 0.0;
        s.ids[k] = (unsigned int)ring[k];
    }

    GLUtesselator* tess = gluNewTess();
    if (!tess)
    {
        Eassert("gluNewTess() != NULL", __FILE__, __LINE__);
        return false;
    }
    gluTessCallback(tess, GLU_TESS_BEGIN_DATA, reinterpret_cast<_GLUfuncptr>(&TessBegin));
    gluTessCallback(tess, GLU_TESS_EDGE_FLAG_DATA, reinterpret_cast<_GLUfuncptr>(&TessEdgeFlag));
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<_GLUfuncptr>(&TessVertex));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<_GLUfuncptr>(&TessCombine));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<_GLUfuncptr>(&TessError));
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, GLU_TESS_WINDING_ODD);
    gluTessNormal(tess, 0.0, 0.0, 1.0);

    gluTessBeginPolygon(tess, &s);
    gluTessBeginContour(tess);
    for (size_t k = 0; k < ring.size(); ++k)
        gluTessVertex(tess, &s.coords[k * 3], &s.ids[k]);
    gluTessEndContour(tess);
    gluTessEndPolygon(tess);
    gluDeleteTess(tess);

    if (s.pendingCount != 0)
        s.failed = true;
    if (indices.empty())
        return false;
    return !s.failed;
}

} // namespace KYR
