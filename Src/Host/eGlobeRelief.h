// The relief of the globe as the "Globe" program draws it, so that the terrain tiles can lie
// on the same surface: a mesh of 73 rows by 145 columns, one vertex every 2.5 degrees, each
// lifted by a height step read from the elevation picture, and flat triangles between them.
// Host internals; effects never see this header.
#pragma once
#include "eString.h"
#include "eVector3.h"
#include <vector>

namespace KYR
{
namespace Host
{

class eGlobeRelief
{
public:
    static constexpr int kRows = 73;     // latitudes -90 .. 90
    static constexpr int kColumns = 145; // longitudes -180 .. 180, both ends kept
    static constexpr double kSpacing = 2.5;

    // Steps all 0 (the bare globe mesh), with the globe effect's height mapping.
    eGlobeRelief();

    // Reads the height steps from a picture the way the globe effect builds its mesh: decoded
    // at 32 bits, the byte at (y * width + x) * 3 for the vertex's pixel (x, y), caps above
    // 88 degrees flat. A picture that cannot be read leaves every step 0 and returns false.
    bool Load(eString const& path);
    void SetFlat();
    // Metres between the Earth and the lifted relief sphere, and metres per height step.
    void SetHeightMapping(double base, double scale);

    unsigned char Step(int row, int column) const;
    // Metres above the Earth's radius of a height step: step * scale * R / (R + base), the
    // lift of the "Globe" program.
    double Lift(unsigned char step) const;
    // World position of the mesh vertex (row, column).
    eVector3T<double> Vertex(int row, int column) const;

    // Longitude and latitude (degrees) of the mesh's grid lines.
    static double Longitude(int column) { return column * kSpacing - 180.0; }
    static double Latitude(int row) { return row * kSpacing - 90.0; }
    // The cell holding a point: row and column of its south-west corner.
    static void Cell(double lon, double lat, int& row, int& column);

    // The world point of the drawn surface at a logical point (degrees). A cell splits along
    // the diagonal from its south-east to its north-west corner into two flat triangles, as
    // the globe's indices do; inside a triangle a point lies where its longitude and
    // latitude weigh the corners, which is how the program interpolates them.
    eVector3T<double> Surface(double lon, double lat) const;
    // The same on one side of the diagonal of a given cell: `upper` is the north-east
    // triangle.
    eVector3T<double> OnTriangle(int row, int column, bool upper, double lon, double lat) const;

private:
    std::vector<unsigned char> m_arSteps; // kRows * kColumns, row 0 at -90
    double m_dHeightBase;
    double m_dHeightScale;
};

} // namespace Host
} // namespace KYR
