#pragma once

#include "tern_common/curve_view/curve_view.hpp"

#include <cstddef>

/// What callbacks and running operations know a view by. It outlives the view, so that they find out when
/// something they called has destroyed it, or has done what they were about to do.
struct CurveView::Presence
{
    CurveView* view;            ///< null once the view is gone
    std::size_t samplings = 0;  ///< counts what makes samples that are being taken obsolete
    std::size_t pointEdits = 0; ///< counts what changes which control points there are

    void makeAllObsolete() noexcept
    {
        ++samplings;
        ++pointEdits;
    }
};
