#pragma once

#include "kodo/chunk/chunk_space.hpp"
#include "kodo/chunk/space_cache.hpp"
#include "kodo/math/ray.hpp"
#include "tern_common/curve_view/curve_view_point_inserter.hpp"
#include "tern_common/export.hpp"

#include <memory>
#include <unordered_set>

class CurveView;

/// The enabled curve views of one chunk space, for picking. Knows the views and does not own them: a view
/// takes itself out before it dies. Main thread only.
class TERN_COMMON_API CurveViewSpaceCache
{
public:
    /// The cache of a space, made on first use: `CurveViewSpaceCache::instance(space)`.
    static Kodo::SpaceCache<CurveViewSpaceCache> instance;

    explicit CurveViewSpaceCache(const Kodo::ChunkSpace& space);
    CurveViewSpaceCache(const CurveViewSpaceCache&) = delete;
    CurveViewSpaceCache& operator=(const CurveViewSpaceCache&) = delete;
    ~CurveViewSpaceCache();

    /// Adds a view; one that is here already stays as it is.
    void registerView(CurveView* view);
    /// Takes a view out; one that is not here is ignored.
    void unregisterView(CurveView* view);

    /// Adds a point where @p ray passes closest to one of the curves, or, without @p insert, previews it for
    /// one frame.
    void collide(const Kodo::Ray& ray, bool insert);

private:
    std::unordered_set<CurveView*> m_views;
    std::unique_ptr<CurveViewPointInserter> m_inserter;
};

/// Instantiated in the library alone: a cache that a plug-in asks for first must not need the plug-in's code.
extern template class TERN_COMMON_API Kodo::SpaceCache<CurveViewSpaceCache>;
