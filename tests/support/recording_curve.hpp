#pragma once

#include "tern_common/curve_view/curve_view.hpp"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// An object of the editor's that stands for one point of a curve.
class CurveKeyObject : public tern::Object
{
};
template <>
class tern::StaticMetaObject<CurveKeyObject> : public tern::BaseStaticMetaObject<0>
{
public:
    StaticMetaObject()
        : BaseStaticMetaObject(typeid(CurveKeyObject), "CurveKeyObject", Annotations(), Bases())
    {
    }
};

/// A curve of keys that says what it likes, counts who asks, and calls back from within any operation. The
/// positions on the way differ from those of the keys in y, so that samples tell where they come from.
class RecordingCurve : public CurveView::IAbstractCurve
{
public:
    struct Key
    {
        Kodo::Vector3 position;
        float parameter = 0.0F;
        float resolution = 4.0F;
        std::shared_ptr<CurveKeyObject> object = std::make_shared<CurveKeyObject>();
    };
    static constexpr float WAY_Y = 100.0F;

    RecordingCurve() = default;
    /// Keys at the parameters 0, 1, 2 and so on, and at those places on the x axis.
    explicit RecordingCurve(std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            keys.push_back(key(static_cast<float>(i)));
        }
    }
    ~RecordingCurve() override
    {
        if (onDestroyed)
        {
            onDestroyed();
        }
    }

    static Key key(float parameter, float resolution = 4.0F)
    {
        Key made;
        made.position = {parameter, 0.0F, 0.0F};
        made.parameter = parameter;
        made.resolution = resolution;
        return made;
    }

    std::size_t pointCount() const override
    {
        called("pointCount");
        return keys.size();
    }
    float pointParameter(std::size_t index) const override
    {
        called("pointParameter");
        return keys.at(index).parameter;
    }
    Kodo::Vector3 positionAt(float parameter) const override
    {
        called("positionAt");
        return {parameter, WAY_Y, 0.0F};
    }
    float segmentResolution(std::size_t index) const override
    {
        called("segmentResolution");
        return keys.at(index).resolution;
    }
    bool isValid() const override
    {
        called("isValid");
        return valid;
    }
    Kodo::Vector3 pointPosition(std::size_t index) const override
    {
        called("pointPosition");
        return keys.at(index).position;
    }
    void insertPoint(const Kodo::Vector3& position, float parameter) override
    {
        insertions.emplace_back(position, parameter);
        called("insertPoint");
    }
    void removePoint(std::size_t index) override
    {
        removals.push_back(index);
        called("removePoint");
        if (removes)
        {
            erase(index, 1);
            pointRemoved(index, 1);
        }
    }
    tern::ReflectedObject pointObject(std::size_t index) const override
    {
        called("pointObject");
        return {keys.at(index).object, tern::staticMetaObject<CurveKeyObject>()};
    }

    /// @name Edits that signal nothing.
    /// @{
    void insert(std::size_t index, std::vector<Key> added)
    {
        keys.insert(keys.begin() + static_cast<std::ptrdiff_t>(index), added.begin(), added.end());
    }
    void erase(std::size_t index, std::size_t count)
    {
        const auto first = keys.begin() + static_cast<std::ptrdiff_t>(index);
        keys.erase(first, first + static_cast<std::ptrdiff_t>(count));
    }
    /// @}

    std::size_t slotCount() const
    {
        return changed.slotCount() + pointUpdated.slotCount() + pointMoved.slotCount() +
               pointAdded.slotCount() + pointRemoved.slotCount();
    }

    std::vector<Key> keys;
    bool valid = true;
    bool removes = true; ///< whether removePoint() removes
    std::vector<std::pair<Kodo::Vector3, float>> insertions;
    std::vector<std::size_t> removals;
    std::function<void()> onDestroyed;
    /// Called by every operation with its name, when it is about to return. May do what it likes.
    mutable std::function<void(const std::string& operation)> onCall;
    mutable std::map<std::string, std::size_t> calls;
    bool counts = true;

private:
    void called(const char* operation) const
    {
        if (counts)
        {
            ++calls[operation];
        }
        if (onCall)
        {
            const auto keep = onCall; // may be replaced from within
            keep(operation);
        }
    }
};

/// Calls @p act once, from within the @p nth call of @p operation.
inline void actWithin(RecordingCurve& curve, std::string operation, std::size_t nth,
                      std::function<void()> act)
{
    curve.onCall = [&curve, operation = std::move(operation), left = std::make_shared<std::size_t>(nth),
                    act = std::move(act)](const std::string& called)
    {
        if (called == operation && --*left == 0)
        {
            const auto once = act;
            curve.onCall = nullptr;
            once(); // may end the curve
        }
    };
}
