#include "eTilePatch.h"
#include "eMesh.h"
#include <algorithm>

namespace KYR
{
namespace Host
{

eMesh* MakeTilePatch(int n)
{
    n = std::min(180, std::max(1, n));
    eMesh* mesh = new eMesh();
    mesh->SetOperationType(eOT_TRIANGLE_LIST);
    eVertexData* vd = mesh->GetVertexData();
    vd->AddElement(eVET_FLOAT, eVEC_3, eAI_POSITION, 0);
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x)
        {
            float v[3] = {(float)x / n, (float)y / n, 0.0f};
            vd->AddVertex(v, 1);
        }
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
        {
            int a = y * (n + 1) + x, b = a + n + 1;
            for (int i : {a, b, a + 1, a + 1, b, b + 1})
                mesh->GetIndexData()->AddIndex((unsigned short)i);
        }
    return mesh;
}

} // namespace Host
} // namespace KYR
