#pragma once

#include "kodo/core/async_manager.hpp"
#include "kodo/core/smart_pointer.hpp"
#include "kodo/math/matrix.hpp"
#include "kodo/math/vector3.hpp"
#include "kodo/render/colour.hpp"
#include "kodo/render/debug_drawer.hpp"
#include "qua/connection.hpp"
#include "qua/signal.hpp"
#include "tern/reflected_object.hpp"
#include "tern_common/curve_view/curve_view_control_point.hpp"
#include "tern_common/curve_view/i_curve_drawer.hpp"
#include "tern_common/export.hpp"

#include <cstddef>
#include <memory>
#include <vector>

/// Shows one editable curve in the 3D scene: a sampled polyline and one control point for each point of the
/// curve. Owns the curve's model and the drawer. Never edits the model: an edit goes to the model through the
/// control points, and the model's signals bring it back here.
///
/// From construction on the view is enabled: rays in its space can insert points into its curve. Main thread
/// only, but for update(), which makes its control points on the main thread wherever it is called.
///
/// The model, the drawer and whoever listens to them may call back in, replace the model or destroy the view
/// from within any call that the view makes. What a call from within has rebuilt stays; the outer operation
/// gives up. What the model throws reaches the caller.
class TERN_COMMON_API CurveView
{
public:
    /// The curve as the editor models it, in a space of its own. Emits a signal after it has changed.
    class TERN_COMMON_API IAbstractCurve
    {
    public:
        IAbstractCurve(const IAbstractCurve&) = delete;
        IAbstractCurve& operator=(const IAbstractCurve&) = delete;
        virtual ~IAbstractCurve();

        virtual std::size_t pointCount() const = 0;
        /// The curve's parameter at a point; does not decrease from point to point on a usual curve.
        virtual float pointParameter(std::size_t index) const = 0;
        virtual Kodo::Vector3 positionAt(float parameter) const = 0;
        /// Into how many steps the view divides the way from point @p index to the next. What would never
        /// get there (negative, or too many for a float to count) is reported, and the way then shows as a
        /// straight line.
        virtual float segmentResolution(std::size_t index) const = 0;
        /// Whether the curve can be shown and edited now.
        virtual bool isValid() const = 0;
        virtual Kodo::Vector3 pointPosition(std::size_t index) const = 0;
        /// The user wants a point at a place in the curve's space and at a parameter: what the model does
        /// about it, it emits.
        virtual void insertPoint(const Kodo::Vector3& position, float parameter) = 0;
        /// The user wants a point removed: what the model does about it, it emits. @p index is the point's
        /// place in the view, and may lie beyond the points of a model that lost some and emitted nothing.
        virtual void removePoint(std::size_t index) = 0;
        /// What stands for a point in the editor (property panels, undo).
        virtual tern::ReflectedObject pointObject(std::size_t index) const = 0;

        /// The curve changed as a whole.
        qua::Signal<void()> changed;
        /// Points @p index to @p index + @p count - 1 changed position.
        qua::Signal<void(std::size_t index, std::size_t count)> pointUpdated;
        /// Two points exchanged places in the order of points.
        qua::Signal<void(std::size_t first, std::size_t second)> pointMoved;
        /// @p count points were inserted, the first of them is @p index now.
        qua::Signal<void(std::size_t index, std::size_t count)> pointAdded;
        /// @p count points were removed, the first of them was @p index.
        qua::Signal<void(std::size_t index, std::size_t count)> pointRemoved;
        /// The view that owns this curve; set by the view.
        CurveView* m_view = nullptr;

    protected:
        IAbstractCurve();
    };

    /// @p curve and @p drawer may be null: without a curve the view is empty, without a drawer the curve
    /// itself is not drawn. Without a @p drawer argument it is a DefaultCurveDrawer. The space should have
    /// its collision scene already: control points made without one are reported, and no ray hits them.
    CurveView(std::unique_ptr<IAbstractCurve> curve, int spaceId);
    CurveView(std::unique_ptr<IAbstractCurve> curve, int spaceId, const Kodo::Matrix& origin);
    CurveView(std::unique_ptr<IAbstractCurve> curve, int spaceId, std::unique_ptr<ICurveDrawer> drawer);
    /// Takes what the source shows, and no more: the curve's signals, its `m_view` and the control points'
    /// deletion still go to the source, and this view is not enabled. Give it a curve by setCurve(), be it
    /// the one it has, and call enableCurveView(), before the source dies.
    CurveView(CurveView&& other); // NOLINT(performance-noexcept-move-constructor): it allocates
    CurveView& operator=(CurveView&&) = delete;
    /// Deletes the model last.
    virtual ~CurveView();

    /// Replaces the model, deletes the old one, and shows the new one. The model it has may be given again,
    /// as getCurve() yields it: it is connected and shown anew.
    void setCurve(std::unique_ptr<IAbstractCurve> curve);
    /// The model; owned by this view.
    IAbstractCurve* getCurve() const noexcept { return m_curve.get(); }

    /// Sets the transform from the curve's space to the world. One that differs by 0.0004 at most in each
    /// element from the present one is ignored.
    void setOrigin(const Kodo::Matrix& origin);
    const Kodo::Matrix& getOrigin() const noexcept { return m_origin; }

    /// One for each point of the curve, in order; or none.
    const std::vector<Kodo::SmartPointer<CurveViewControlPoint>>& getControlPoints() const noexcept
    {
        return m_controlPoints;
    }

    /// Puts the view among those of its space whose curves rays can insert points into; twice is once.
    void enableCurveView();
    void disableCurveView();

    /// Builds everything anew. Off the main thread the control points are made by the next run of the main
    /// thread's jobs.
    void update();
    /// @name What the model's signals are connected to.
    /// While the model is not valid these change nothing, except that updatePointRemoved() takes all control
    /// points away. Otherwise they sample the curve anew, make all control points if there are none (all but
    /// updatePointRemoved()), or else follow the change. A range beyond the points is reported and, after the
    /// sampling, ignored.
    /// @{
    void updatePoint(std::size_t index, std::size_t count);
    void updatePointAdded(std::size_t index, std::size_t count);
    /// Leaves the positions as they are: these the model reports by pointUpdated.
    void updatePointMoved(std::size_t first, std::size_t second);
    void updatePointRemoved(std::size_t index, std::size_t count);
    /// @}

    /// Draws curve, control points (selected ones first) and preview, which is gone afterwards; nothing at
    /// all while the curve has no samples.
    void render(Kodo::DebugDrawer::Context& context);

    /// Sets the colour of the curve; control points get a lighter one.
    void setCurveColor(Kodo::Render::Colour32Bit colour);
    /// Sets the colour of curve and control points where they are hidden behind the scene.
    void setCurveColorDown(Kodo::Render::Colour32Bit colour);
    /// @name Kept for the editor's own use; nothing is drawn in these colours.
    /// @{
    void setCurveKeyColor(Kodo::Render::Colour32Bit colour) noexcept { m_keyColor = colour; }
    void setCurveKeyHoverColor(Kodo::Render::Colour32Bit colour) noexcept { m_keyHoverColor = colour; }
    void setCurveKeySelectedColor(Kodo::Render::Colour32Bit colour) noexcept { m_keySelectedColor = colour; }
    /// @}
    /// Sets the drawer's width of line, in world units.
    void setCurveThickness(float thickness);
    /// What the drawer reports; 1.2 without one.
    float curveThickness() const;

private:
    friend class CurveViewPointInserter;

    struct Presence;
    class Sampler;
    class NewPoints;

    using ControlPoints = std::vector<Kodo::SmartPointer<CurveViewControlPoint>>;

    /// Sets the members and nothing else: what throws in a constructor after this one runs the destructor.
    CurveView(int spaceId, const Kodo::Matrix& origin, std::unique_ptr<ICurveDrawer> drawer);

    void show(std::unique_ptr<IAbstractCurve> curve);
    void connectCurve();
    void prepare();
    bool isInvalid() const;
    bool isWithin(std::size_t index, std::size_t count) const noexcept;
    void clearSamples() noexcept;
    void updateCurve();

    bool followEdit();
    static void rebuild(const Presence& presence);

    void createControlPoints();
    void deferControlPoints();
    bool makeAllControlPoints(std::size_t& count);
    void insertControlPoints(std::size_t index, std::size_t count);
    void refreshControlPoints(std::size_t index, std::size_t count);
    void refreshControlPoint(const Kodo::SmartPointer<CurveViewControlPoint>& point, std::size_t hint,
                             const Presence& presence);
    void removeControlPoints(std::size_t index, std::size_t count);
    void destroyControlPoints();
    void destroyGhostPoint();
    Kodo::Matrix pointTransform(const Kodo::Vector3& position) const noexcept;
    Kodo::SmartPointer<CurveViewControlPoint> makeControlPoint(std::size_t index);
    void drawControlPoints(Kodo::DebugDrawer::Context& context) const;
    void tryDeleteControlPoint(CurveViewControlPoint* point);

    std::unique_ptr<IAbstractCurve> m_curve;
    std::unique_ptr<ICurveDrawer> m_drawer;
    Kodo::Render::Colour32Bit m_curveColor{0xFF2CFFA6U};
    Kodo::Render::Colour32Bit m_curveColorDown{0xFF006F9AU};
    Kodo::Render::Colour32Bit m_keyColor{0xFF2CFFA6U};
    Kodo::Render::Colour32Bit m_keyHoverColor{0xFFCAFFE9U};
    Kodo::Render::Colour32Bit m_keySelectedColor{0xFF2CFFA6U};
    std::vector<Kodo::Vector3> m_points;
    std::vector<float> m_parameters;
    ControlPoints m_controlPoints;
    Kodo::Matrix m_origin;
    int m_spaceId;
    Kodo::SmartPointer<CurveViewControlPoint> m_ghostPoint;
    std::vector<qua::Connection> m_connections;
    Kodo::AsyncManager::Job m_createJob;
    std::shared_ptr<Presence> m_presence; ///< what callbacks hold: this view may be gone when they are called
};
