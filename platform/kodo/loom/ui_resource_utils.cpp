#include "kodo/loom/ui_resource_utils.hpp"

#include "kodo/loom/ui_resource_manager.hpp"

#include <mutex>
#include <string_view>

namespace Kodo::Loom::UiResourceUtils
{

namespace
{

struct CurrentLanguage
{
    std::mutex mutex;
    std::string name;
};

CurrentLanguage& shared()
{
    static CurrentLanguage language;
    return language;
}

} // namespace

std::string getTranslatedText(const std::string& key, const UiResourceManager& manager)
{
    const std::string_view whole = key;
    const std::size_t mark = whole.find('#');
    const std::size_t colon = mark == std::string_view::npos ? mark : whole.find(':', mark + 1);
    if (colon == std::string_view::npos)
    {
        return key;
    }
    const std::string_view text =
        manager.find(whole.substr(mark + 1, colon - mark - 1), whole.substr(colon + 1));
    if (text.empty())
    {
        return key;
    }
    std::string result;
    result.reserve(mark + text.size());
    result.append(whole.substr(0, mark)).append(text);
    return result;
}

void setCurrentLanguage(const std::string& language)
{
    CurrentLanguage& current = shared();
    const std::lock_guard lock(current.mutex);
    current.name = language;
}

std::string currentLanguage()
{
    CurrentLanguage& current = shared();
    const std::lock_guard lock(current.mutex);
    return current.name;
}

} // namespace Kodo::Loom::UiResourceUtils
