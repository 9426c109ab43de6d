#include "eGlobeRelief.h"
#include "eFile.h"
#include "eMathEngine.h"
#include "eTexture.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace KYR
{
namespace Host
{

namespace
{
double const kRadius = 6378137.0;
double const kDegToRad = 0.017453292519943295;

std::unique_ptr<eImageData> ReadPicture(eString const& path)
{
    eFileStream stream;
    eByteArray bytes;
    if (path.IsEmpty() || !stream.Open(path.Cstr(), eSD_READ, 8192) ||
        !stream.LoadByteArray(bytes) || !bytes.GetSize())
        return nullptr;
    std::unique_ptr<eImageData> image(eFileParserToolkit::LoadImageData(bytes, 32));
    if (image && !image->m_pData)
        image.reset();
    return image;
}
} // namespace

eGlobeRelief::eGlobeRelief()
    : m_arSteps((size_t)kRows * kColumns, 0), m_dHeightBase(5000000.0), m_dHeightScale(1000.0)
{
}

bool eGlobeRelief::Load(eString const& path)
{
    SetFlat();
    std::unique_ptr<eImageData> image = ReadPicture(path);
    if (!image)
    {
        std::fprintf(stderr,
                     "host: elevation picture '%s' cannot be read; the tiles lie on the globe "
                     "mesh without relief\n",
                     path.Cstr());
        return false;
    }
    size_t const bytes = (size_t)image->m_nPitch * image->m_nHeight;
    for (int i = 0; i < kRows; ++i)
        for (int j = 0; j < kColumns; ++j)
        {
            double lon = Longitude(j), lat = Latitude(i);
            if (std::fabs(lat) > 88.0)
                continue; // flat polar caps
            int x = (int)((lon + 180.0) * 0.0027777777777778 * (image->m_nWidth - 1));
            int y = (int)((1.0 - (lat + 90.0) * 0.0055555555555556) * (image->m_nHeight - 1));
            // The first channel at a fixed stride of three bytes, whatever the depth: the
            // globe effect reads its picture that way.
            size_t at = ((size_t)y * image->m_nWidth + x) * 3;
            if (x >= 0 && y >= 0 && at < bytes)
                m_arSteps[(size_t)i * kColumns + j] = image->m_pData[at];
        }
    return true;
}

void eGlobeRelief::SetFlat()
{
    std::fill(m_arSteps.begin(), m_arSteps.end(), (unsigned char)0);
}

void eGlobeRelief::SetHeightMapping(double base, double scale)
{
    m_dHeightBase = base;
    m_dHeightScale = scale;
}

unsigned char eGlobeRelief::Step(int row, int column) const
{
    row = std::min(kRows - 1, std::max(0, row));
    column = std::min(kColumns - 1, std::max(0, column));
    return m_arSteps[(size_t)row * kColumns + column];
}

double eGlobeRelief::Lift(unsigned char step) const
{
    return step * m_dHeightScale * kRadius / (kRadius + m_dHeightBase);
}

eVector3T<double> eGlobeRelief::Vertex(int row, int column) const
{
    return eMathEngine::SphericalToCartesian(Longitude(column) * kDegToRad,
                                             Latitude(row) * kDegToRad,
                                             kRadius + Lift(Step(row, column)));
}

void eGlobeRelief::Cell(double lon, double lat, int& row, int& column)
{
    column = (int)std::floor((lon + 180.0) / kSpacing);
    row = (int)std::floor((lat + 90.0) / kSpacing);
    column = std::min(kColumns - 2, std::max(0, column));
    row = std::min(kRows - 2, std::max(0, row));
}

eVector3T<double> eGlobeRelief::OnTriangle(int row, int column, bool upper, double lon,
                                           double lat) const
{
    // s eastward and t northward across the cell, 0..1.
    double s = (lon - Longitude(column)) / kSpacing;
    double t = (lat - Latitude(row)) / kSpacing;
    eVector3T<double> east = Vertex(row, column + 1), north = Vertex(row + 1, column);
    if (!upper)
    {
        eVector3T<double> corner = Vertex(row, column);
        return corner + (east - corner) * s + (north - corner) * t;
    }
    eVector3T<double> corner = Vertex(row + 1, column + 1);
    return corner + (north - corner) * (1.0 - s) + (east - corner) * (1.0 - t);
}

eVector3T<double> eGlobeRelief::Surface(double lon, double lat) const
{
    int row = 0, column = 0;
    Cell(lon, lat, row, column);
    double s = (lon - Longitude(column)) / kSpacing;
    double t = (lat - Latitude(row)) / kSpacing;
    return OnTriangle(row, column, s + t > 1.0, lon, lat);
}

} // namespace Host
} // namespace KYR
