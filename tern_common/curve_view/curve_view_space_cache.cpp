#include "tern_common/curve_view/curve_view_space_cache.hpp"

#include "kodo/core/stack_tracker.hpp"
#include "tern_common/curve_view/curve_view.hpp"

namespace
{
constexpr std::size_t USUAL_VIEW_COUNT = 8;
} // namespace

CurveViewSpaceCache::CurveViewSpaceCache(const Kodo::ChunkSpace& /*space*/) : m_views(USUAL_VIEW_COUNT)
{
    m_views.max_load_factor(1.0F);
    const auto forEachView = [this](const std::function<void(CurveView&)>& visit)
    {
        for (CurveView* const view : m_views)
        {
            if (view != nullptr)
            {
                visit(*view);
            }
        }
    };
    m_inserter = std::make_unique<CurveViewPointInserter>(forEachView);
}

CurveViewSpaceCache::~CurveViewSpaceCache() = default;

void CurveViewSpaceCache::registerView(CurveView* view)
{
    KODO_PROFILE_SCOPE("CurveViewSpaceCache::registerView");
    m_views.insert(view);
}

void CurveViewSpaceCache::unregisterView(CurveView* view)
{
    KODO_PROFILE_SCOPE("CurveViewSpaceCache::unregisterView");
    m_views.erase(view);
}

void CurveViewSpaceCache::collide(const Kodo::Ray& ray, bool insert)
{
    KODO_PROFILE_SCOPE("CurveViewSpaceCache::collide");
    m_inserter->insert(ray, insert ? CurveViewPointInserter::InsertType::Insert
                                   : CurveViewPointInserter::InsertType::Ghost);
}
