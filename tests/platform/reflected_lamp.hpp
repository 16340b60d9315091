#pragma once

#include "tern/meta_object.hpp"
#include "tern/object.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

/// Reflected, with a property that can be set and one that cannot.
class Lamp : public tern::Object
{
public:
    std::int64_t brightness = 3;
};

/// Has the latter anew.
class HarbourLamp : public Lamp
{
};

inline std::string textOf(const vell::Variant& value)
{
    std::string text;
    EXPECT_TRUE(value.tryCast(text));
    return text;
}

template <>
class tern::StaticMetaObject<Lamp> : public tern::BaseStaticMetaObject<0>
{
public:
    StaticMetaObject()
        : BaseStaticMetaObject(typeid(Lamp), "Lamp", tern::Annotations({std::string("Plain Lamp")}), Bases())
    {
        addProperty({"brightness",
                     [](const Object& object) -> vell::Variant
                     { return static_cast<const Lamp&>(object).brightness; },
                     [](Object& object, const vell::Variant& value)
                     { return value.tryCast(static_cast<Lamp&>(object).brightness); },
                     tern::Annotations()});
        addProperty({"kind", [](const Object&) -> vell::Variant { return "lamp"; }, {}, tern::Annotations()});
        MetaObjectManager::instance().registerType(*this);
    }
};

template <>
class tern::StaticMetaObject<HarbourLamp> : public tern::BaseStaticMetaObject<1>
{
public:
    StaticMetaObject()
        : BaseStaticMetaObject(typeid(HarbourLamp), "HarbourLamp", tern::Annotations(),
                               {&staticMetaObject<Lamp>()})
    {
        addProperty(
            {"kind", [](const Object&) -> vell::Variant { return "harbour lamp"; }, {}, tern::Annotations()});
        MetaObjectManager::instance().registerType(*this);
    }
};
