#pragma once

#include "kodo/loom/ui_resource_manager.hpp"

#include <functional>
#include <string>
#include <utility>
#include <vector>

/// Stands in for the UI framework's translation while it lives: the program that holds this double has a
/// getTranslatedText() of its own, which comes before the platform's. One at a time.
class ScriptedFramework
{
public:
    using Answer = std::function<std::string(const std::string& key)>;

    explicit ScriptedFramework(Answer answer);
    ScriptedFramework(const ScriptedFramework&) = delete;
    ScriptedFramework& operator=(const ScriptedFramework&) = delete;
    ~ScriptedFramework();

    void answerWith(Answer answer) { m_answer = std::move(answer); }

    /// The keys that were asked for since the last call, in order.
    std::vector<std::string> takeKeys();
    /// The managers that came with them, each once.
    const std::vector<const Kodo::Loom::UiResourceManager*>& managers() const { return m_managers; }

    std::string translate(const std::string& key, const Kodo::Loom::UiResourceManager& manager);

private:
    Answer m_answer;
    std::vector<std::string> m_keys;
    std::vector<const Kodo::Loom::UiResourceManager*> m_managers;
};
