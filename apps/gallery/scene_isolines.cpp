// Scenes "isolines" and "isolines-map": a contour map over hill-shaded terrain. Heights come
// from the elevation picture the globe uses (GalleryContour.h); a level every 500 m is traced
// by marching squares, drawn as antialiased lines (every 1000 m darker and wider), and the
// longer 1000 m lines carry their values, upright along the line. The first scene lies on
// the globe over the Tibetan plateau, the second on a Mercator map of western North America.
#include "Gallery.h"
#include "GalleryContour.h"
#include "GalleryGeo.h"
#include "eCoordSys.h"
#include "eFile.h"
#include "eRenderHillShading.h"
#include "eRenderIsoLineGradationObject.h"
#include "eRenderIsoLineLabelObject.h"
#include <cmath>

namespace
{

struct Region
{
    double west, south, east, north;
};

double const kLevelStep = 500.0;
double const kIndexStep = 1000.0;

// The heights as a float raster over the region, rows evenly spaced in map metres of the
// scene's projection (the hill shading lays its raster out in map coordinates).
KYR::eRasterBlock* HeightBlock(Gallery::ElevationPicture const& picture, Region const& r,
                               KYR::eCoordSys& coordSys, int size)
{
    KYR::ePoint2D nw, se;
    if (!coordSys.GeoToMap(KYR::ePoint2D(r.west, r.north), nw) ||
        !coordSys.GeoToMap(KYR::ePoint2D(r.east, r.south), se))
        return nullptr;
    auto* block = new KYR::eRasterBlock();
    float* data = static_cast<float*>(block->Allocate(KYR::ePF_FLOAT, size, size));
    block->m_rcBounds = KYR::eRect2D(nw.x, nw.y, se.x, se.y);
    block->m_dMinimum = 1e30;
    block->m_dMaximum = -1e30;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
        {
            KYR::ePoint2D map(nw.x + (se.x - nw.x) * (x + 0.5) / size,
                              nw.y + (se.y - nw.y) * (y + 0.5) / size),
                geo;
            coordSys.MapToGeo(map, geo);
            double h = picture.Metres(geo.x, geo.y);
            data[(size_t)y * size + x] = (float)h;
            block->m_dMinimum = std::min(block->m_dMinimum, h);
            block->m_dMaximum = std::max(block->m_dMaximum, h);
        }
    return block;
}

// Traces every level over the region, hands the lines to the two line objects and the
// longer index lines to the labels.
void AddContours(KYR::Host::eScene& scene, Gallery::SceneKeep& keep,
                 Gallery::ElevationPicture const& picture, Region const& r, int labelSize,
                 double labelSpacing)
{
    int const columns = (int)std::lround((r.east - r.west) * 4.0) + 1; // a quarter degree
    int const rows = (int)std::lround((r.north - r.south) * 4.0) + 1;
    Gallery::HeightGrid grid =
        Gallery::SampleGrid(picture, r.west, r.south, r.east, r.north, columns, rows);
    double top = *std::max_element(grid.metres.begin(), grid.metres.end());

    auto* minor = keep.Keep(new KYR::eRenderIsoLineGradationObject());
    minor->SetColor(KYR::eVector4T<unsigned char>(70, 45, 20, 170));
    minor->SetLineWidth(1.2f);
    auto* index = keep.Keep(new KYR::eRenderIsoLineGradationObject());
    index->SetColor(KYR::eVector4T<unsigned char>(60, 30, 10, 255));
    index->SetLineWidth(2.2f);
    auto* labels = keep.Keep(new KYR::eRenderIsoLineLabelObject());
    labels->SetLabelSize(labelSize);
    labels->SetLabelColor(KYR::ERGBA(255, 236, 150, 255));

    // Lines drawn after the hill shading (group 6), which would otherwise cover them.
    minor->m_nRenderQueueId = 8;
    index->m_nRenderQueueId = 8;

    KYR::eArray<KYR::eArray<KYR::ePoint2D>> labelled;
    KYR::eArray<double> values;
    std::vector<KYR::ePoint2D> anchors;
    // Where the label object will put a line's labels: both ends of an open line, the top of
    // a closed one. A line is labelled only when these keep clear of the labels before.
    auto clearOfOthers = [&](Gallery::Contour const& line)
    {
        std::vector<KYR::ePoint2D> mine;
        if (line.Closed())
            mine.push_back(*std::max_element(line.points.begin(), line.points.end(),
                                             [](KYR::ePoint2D const& a, KYR::ePoint2D const& b)
                                             { return a.y < b.y; }));
        else
        {
            mine = {line.points.front(), line.points.back()};
            if (std::hypot(mine[0].x - mine[1].x, mine[0].y - mine[1].y) < labelSpacing)
                return false;
        }
        for (KYR::ePoint2D const& a : mine)
            for (KYR::ePoint2D const& b : anchors)
                if (std::hypot(a.x - b.x, a.y - b.y) < labelSpacing)
                    return false;
        anchors.insert(anchors.end(), mine.begin(), mine.end());
        return true;
    };
    for (double level = kLevelStep; level < top; level += kLevelStep)
    {
        bool isIndex = std::fmod(level, kIndexStep) == 0.0;
        for (Gallery::Contour const& line : Gallery::TraceLevel(grid, level))
        {
            std::vector<KYR::eVector3T<double>> points;
            for (KYR::ePoint2D const& p : line.points)
                points.push_back(KYR::eVector3T<double>(p.x, p.y, 0.0));
            (isIndex ? index : minor)->AddLine(points);
            // Labels go on lines long enough to carry them without crowding.
            if (isIndex && line.Length() > (line.Closed() ? 4.0 : 6.0) && clearOfOthers(line))
            {
                KYR::eArray<KYR::ePoint2D> copy;
                for (KYR::ePoint2D const& p : line.points)
                    copy.Add(p);
                labelled.Add(copy);
                values.Add(level);
            }
        }
    }
    labels->SetIsoLines(labelled, values);
    scene.Add(minor);
    scene.Add(index);
    scene.Add(labels);
}

bool LoadPicture(Gallery::ElevationPicture& picture)
{
    return picture.Load((KYR::eSystem::GetWorkPath() + "Resources/Icons/elev_bump_4k.jpg").Str());
}

bool BuildIsoLines(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::ElevationPicture picture;
    if (!LoadPicture(picture))
        return false;
    Gallery::AddEarth(scene, keep, 80.0, 35.0);
    scene.Camera().LookAt(86.0, 33.0, 7.6e6, 0.0, 0.0);
    Region const shaded{60.0, 14.0, 112.0, 52.0};
    if (KYR::eRasterBlock* block = HeightBlock(picture, shaded, scene.CoordSys(), 1024))
        scene.Add(keep.Keep(new KYR::eRenderHillShading(block)));
    AddContours(scene, keep, picture, Region{64.0, 18.0, 108.0, 48.0}, 24, 5.0);
    return true;
}

bool BuildIsoLinesMap(KYR::Host::eScene& scene, Gallery::SceneKeep& keep)
{
    Gallery::ElevationPicture picture;
    if (!LoadPicture(picture))
        return false;
    scene.SetClearColor(0.02f, 0.03f, 0.08f, 1.0f);
    Region const shaded{-128.0, 22.0, -92.0, 53.0};
    KYR::ePoint2D centre;
    scene.CoordSys().GeoToMap(KYR::ePoint2D(-110.0, 38.0), centre);
    scene.Camera().LookAtMap(centre.x, centre.y, 9.5e6, 0.0, 0.0);
    if (KYR::eRasterBlock* block = HeightBlock(picture, shaded, scene.CoordSys(), 1024))
        scene.Add(keep.Keep(new KYR::eRenderHillShading(block)));
    AddContours(scene, keep, picture, Region{-126.0, 24.0, -94.0, 51.0}, 22, 3.5);
    return true;
}

Gallery::Register s_isolines({"isolines",
                              "contours every 500 m with upright values over hill-shaded "
                              "terrain on the globe",
                              KYR::eSM_GLOBE, KYR::PJ_PLATE_CARREE,
                              Gallery::WithEarth({"Resources/Icons/elev_bump_4k.jpg"}),
                              BuildIsoLines});
Gallery::Register s_isolinesMap({"isolines-map",
                                 "the same contour map on a Mercator plane map",
                                 KYR::eSM_PLANE,
                                 KYR::PJ_SPHERE_MERCATOR,
                                 {"Resources/Icons/elev_bump_4k.jpg"},
                                 BuildIsoLinesMap});

} // namespace
