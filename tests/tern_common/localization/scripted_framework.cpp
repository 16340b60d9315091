#include "tests/tern_common/localization/scripted_framework.hpp"

#include "kodo/loom/ui_resource_utils.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace
{

ScriptedFramework* current = nullptr;

} // namespace

ScriptedFramework::ScriptedFramework(Answer answer) : m_answer(std::move(answer))
{
    EXPECT_EQ(std::exchange(current, this), nullptr);
}

ScriptedFramework::~ScriptedFramework()
{
    current = nullptr;
}

std::vector<std::string> ScriptedFramework::takeKeys()
{
    return std::exchange(m_keys, {});
}

std::string ScriptedFramework::translate(const std::string& key, const Kodo::Loom::UiResourceManager& manager)
{
    m_keys.push_back(key);
    if (std::find(m_managers.begin(), m_managers.end(), &manager) == m_managers.end())
    {
        m_managers.push_back(&manager);
    }
    return m_answer(key);
}

std::string Kodo::Loom::UiResourceUtils::getTranslatedText(const std::string& key,
                                                           const UiResourceManager& manager)
{
    return current->translate(key, manager);
}
