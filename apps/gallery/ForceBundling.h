// Force-directed edge bundling of straight routes in the plane: every route becomes a chain of
// points that springs hold together while routes running the same way at the same place pull
// each other's points closer, so that a picture of many routes shows a few bundles instead of
// a tangle of lines. The routes are refined in cycles: each cycle doubles the points on every
// route, halves the step, and runs fewer iterations, so the bundles form coarsely first and
// then find their shape.
#pragma once
#include <algorithm>
#include <cmath>
#include <vector>

namespace Gallery
{

struct Vec2
{
    double x = 0.0, y = 0.0;
    Vec2() {}
    Vec2(double x_, double y_) : x(x_), y(y_) {}
    Vec2 operator+(Vec2 const& o) const { return Vec2(x + o.x, y + o.y); }
    Vec2 operator-(Vec2 const& o) const { return Vec2(x - o.x, y - o.y); }
    Vec2 operator*(double s) const { return Vec2(x * s, y * s); }
    double Dot(Vec2 const& o) const { return x * o.x + y * o.y; }
    double Length() const { return std::sqrt(x * x + y * y); }
};

struct BundlingOptions
{
    int cycles = 6;
    int firstIterations = 90;
    double iterationRate = 2.0 / 3.0; // iterations of a cycle over those of the one before
    double firstStep = 0.1;           // in the units of the routes' coordinates
    double stiffness = 0.1;           // of the springs along a route
    double threshold = 0.6;           // compatibility below which two routes ignore each other
    int smoothing = 3;                // passes that average each point with its neighbours
};

// How much two routes (a0 -> a1, b0 -> b1) should bundle, 0 to 1: the product of how
// parallel they run, how alike their lengths are, how near their middles are, and how much
// of each the other one sees when projected onto it.
inline double Compatibility(Vec2 a0, Vec2 a1, Vec2 b0, Vec2 b1)
{
    Vec2 a = a1 - a0, b = b1 - b0;
    double la = a.Length(), lb = b.Length();
    if (la <= 0.0 || lb <= 0.0)
        return 0.0;
    double angle = std::fabs(a.Dot(b)) / (la * lb);
    double average = 0.5 * (la + lb);
    double scale = 2.0 / (average / std::min(la, lb) + std::max(la, lb) / average);
    Vec2 ma = (a0 + a1) * 0.5, mb = (b0 + b1) * 0.5;
    double position = average / (average + (ma - mb).Length());
    // The share of p's line that q's projection covers around p's middle: 1 when it is
    // centred there, 0 when it misses.
    auto visibility = [](Vec2 p0, Vec2 p1, Vec2 q0, Vec2 q1)
    {
        Vec2 d = p1 - p0;
        double l2 = d.Dot(d);
        Vec2 i0 = p0 + d * ((q0 - p0).Dot(d) / l2), i1 = p0 + d * ((q1 - p0).Dot(d) / l2);
        double span = (i1 - i0).Length();
        if (span <= 0.0)
            return 0.0;
        Vec2 mid = (i0 + i1) * 0.5, pm = (p0 + p1) * 0.5;
        return std::max(0.0, 1.0 - 2.0 * (pm - mid).Length() / span);
    };
    double visible = std::min(visibility(a0, a1, b0, b1), visibility(b0, b1, a0, a1));
    return angle * scale * position * visible;
}

// Bundles straight routes given by their end points; returns each route as a chain from its
// first end point to its second.
inline std::vector<std::vector<Vec2>> BundleRoutes(std::vector<Vec2> const& from,
                                                   std::vector<Vec2> const& to,
                                                   BundlingOptions const& o = BundlingOptions())
{
    size_t const n = std::min(from.size(), to.size());
    // The routes each one pulls on, with its weight and whether it runs the other way (then
    // point i of one meets point count - 1 - i of the other).
    struct Link
    {
        size_t other;
        double weight;
        bool reversed;
    };
    std::vector<std::vector<Link>> links(n);
    for (size_t i = 0; i < n; ++i)
        for (size_t j = i + 1; j < n; ++j)
        {
            double c = Compatibility(from[i], to[i], from[j], to[j]);
            if (c < o.threshold)
                continue;
            bool reversed = (to[i] - from[i]).Dot(to[j] - from[j]) < 0.0;
            links[i].push_back({j, c, reversed});
            links[j].push_back({i, c, reversed});
        }

    // Each route as its end points with `inner` points between.
    std::vector<std::vector<Vec2>> routes(n);
    for (size_t i = 0; i < n; ++i)
        routes[i] = {from[i], to[i]};
    double step = o.firstStep;
    double iterations = o.firstIterations;
    std::vector<std::vector<Vec2>> next(n);
    for (int cycle = 0; cycle < o.cycles; ++cycle)
    {
        // Doubles the segments: a new point in the middle of each.
        for (std::vector<Vec2>& r : routes)
        {
            std::vector<Vec2> finer;
            for (size_t k = 0; k + 1 < r.size(); ++k)
            {
                finer.push_back(r[k]);
                finer.push_back((r[k] + r[k + 1]) * 0.5);
            }
            finer.push_back(r.back());
            r.swap(finer);
        }
        size_t const count = routes.empty() ? 0 : routes[0].size();
        for (int it = 0; it < (int)iterations; ++it)
        {
            for (size_t i = 0; i < n; ++i)
            {
                std::vector<Vec2> const& r = routes[i];
                double length = (to[i] - from[i]).Length();
                double spring = o.stiffness / (std::max(length, 1e-9) * (count - 1));
                next[i] = r;
                for (size_t k = 1; k + 1 < count; ++k)
                {
                    Vec2 force = ((r[k - 1] - r[k]) + (r[k + 1] - r[k])) * spring;
                    for (Link const& l : links[i])
                    {
                        Vec2 d = routes[l.other][l.reversed ? count - 1 - k : k] - r[k];
                        double dl = d.Length();
                        if (dl > 1e-9)
                            force = force + d * (l.weight / dl);
                    }
                    next[i][k] = r[k] + force * step;
                }
            }
            routes.swap(next);
        }
        step *= 0.5;
        iterations *= o.iterationRate;
    }

    // Evens out the kinks the last steps leave.
    for (int pass = 0; pass < o.smoothing; ++pass)
        for (std::vector<Vec2>& r : routes)
        {
            std::vector<Vec2> smooth = r;
            for (size_t k = 1; k + 1 < r.size(); ++k)
                smooth[k] = (r[k - 1] + r[k] * 2.0 + r[k + 1]) * 0.25;
            r.swap(smooth);
        }
    return routes;
}

// Points along a chain every `spacing` of its length, the first and the last included.
inline std::vector<Vec2> Resample(std::vector<Vec2> const& chain, double spacing)
{
    std::vector<Vec2> out;
    if (chain.empty())
        return out;
    double total = 0.0;
    for (size_t k = 0; k + 1 < chain.size(); ++k)
        total += (chain[k + 1] - chain[k]).Length();
    int steps = std::max(1, (int)std::lround(total / spacing));
    double each = total / steps, walked = 0.0;
    size_t k = 0;
    out.push_back(chain.front());
    for (int s = 1; s < steps; ++s)
    {
        double at = s * each;
        while (k + 1 < chain.size() && walked + (chain[k + 1] - chain[k]).Length() < at)
        {
            walked += (chain[k + 1] - chain[k]).Length();
            ++k;
        }
        if (k + 1 >= chain.size())
            break;
        double l = (chain[k + 1] - chain[k]).Length();
        out.push_back(chain[k] + (chain[k + 1] - chain[k]) * (l > 0.0 ? (at - walked) / l : 0.0));
    }
    out.push_back(chain.back());
    return out;
}

} // namespace Gallery
