// One slot of a list line trace set: the list it currently draws, its fixed range of the
// set's vertex buffer, and the stretch of the list that the time window shows. A line
// outlives its lists: when one expires the line is given the next.
#pragma once

namespace KYR
{

class eTraceList;

class eLineTrace
{
public:
    eLineTrace();
    eLineTrace(int index, eTraceList* list);

    eTraceList* m_pTraceList; // owned: freed with the line by the set that made it
    int m_nIndex;             // slot in the vertex buffer
    int m_nFirstIndex;        // first position of the window
    int m_nWindowCount;       // positions in the window
};

} // namespace KYR
