// One point of a scatter set: its icon category and its geographic place.
#pragma once

namespace KYR
{

class eScatterPoint
{
public:
    // id is left as it comes: callers always name the category themselves.
    eScatterPoint();
    eScatterPoint(int category, double lon, double lat, double height, double visible);

    int id;   // atlas tile and category; -1 marks an empty slot in the buffer
    double x; // longitude, degrees
    double y; // latitude, degrees
    double z; // height, metres
    double w; // 1 visible, 0 hidden (a hidden point is not pickable)
};

} // namespace KYR
