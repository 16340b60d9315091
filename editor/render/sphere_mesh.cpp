#include "editor/render/sphere_mesh.hpp"

#include <algorithm>
#include <map>
#include <utility>

namespace
{

using Index = std::uint16_t;

SphereMesh makeIcosahedron()
{
    constexpr float LONG = 0.8506508F; // the golden ratio to one, together of length 1
    constexpr float SHORT = 0.5257311F;
    return {{{-SHORT, LONG, 0},
             {SHORT, LONG, 0},
             {-SHORT, -LONG, 0},
             {SHORT, -LONG, 0},
             {0, -SHORT, LONG},
             {0, SHORT, LONG},
             {0, -SHORT, -LONG},
             {0, SHORT, -LONG},
             {LONG, 0, -SHORT},
             {LONG, 0, SHORT},
             {-LONG, 0, -SHORT},
             {-LONG, 0, SHORT}},
            {0, 11, 5,  0, 5,  1, 0, 1, 7, 0, 7,  10, 0, 10, 11, 1, 5, 9, 5, 11,
             4, 11, 10, 2, 10, 7, 6, 7, 1, 8, 3,  9,  4, 3,  4,  2, 3, 2, 6, 3,
             6, 8,  3,  8, 9,  4, 9, 5, 2, 4, 11, 6,  2, 10, 8,  6, 7, 9, 8, 1}};
}

/// Splits triangles, making the vertex in the middle of each edge once.
class Splitter
{
public:
    explicit Splitter(SphereMesh mesh) : m_vertices(std::move(mesh.vertices)), m_old(std::move(mesh.indices))
    {
    }

    SphereMesh split()
    {
        for (std::size_t i = 0; i < m_old.size(); i += 3)
        {
            const Index a = m_old[i];
            const Index b = m_old[i + 1];
            const Index c = m_old[i + 2];
            const Index ab = middle(a, b);
            const Index bc = middle(b, c);
            const Index ca = middle(c, a);
            m_new.insert(m_new.end(), {a, ab, ca, ab, b, bc, ca, bc, c, ab, bc, ca});
        }
        return {std::move(m_vertices), std::move(m_new)};
    }

private:
    Index middle(Index a, Index b)
    {
        const auto [place, isNew] =
            m_middles.try_emplace(std::minmax(a, b), static_cast<Index>(m_vertices.size()));
        if (isNew)
        {
            m_vertices.push_back((m_vertices[a] + m_vertices[b]).normalised());
        }
        return place->second;
    }

    std::vector<Kodo::Vector3> m_vertices;
    std::vector<Index> m_old;
    std::vector<Index> m_new;
    std::map<std::pair<Index, Index>, Index> m_middles;
};

} // namespace

SphereMesh makeSphereMesh(int splits)
{
    SphereMesh mesh = makeIcosahedron();
    for (int i = 0; i < splits; ++i)
    {
        mesh = Splitter(std::move(mesh)).split();
    }
    return mesh;
}
