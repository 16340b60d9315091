#include "kodo/loom/ui_resource_utils.hpp"

#include "kodo/loom/ui_resource_manager.hpp"

#include <algorithm>
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

/// Of ASCII; all that is beyond it counts as a letter.
bool isLetterOrDigit(char unit) noexcept
{
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || (unit >= '0' && unit <= '9') ||
           static_cast<unsigned char>(unit) >= 0x80;
}

/// The name of a message that a text begins with: letters, digits and '_', with '.', '-' and '/' between
/// them.
std::string_view nameAtFront(std::string_view text) noexcept
{
    std::size_t end = 0;
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        const bool isInner = text[at] == '.' || text[at] == '-' || text[at] == '/';
        const bool isOuter = text[at] == '_' || isLetterOrDigit(text[at]);
        if (!isInner && !isOuter)
        {
            break;
        }
        end = isOuter ? at + 1 : end;
    }
    return text.substr(0, end);
}

} // namespace

std::string getTranslatedText(const std::string& key, const UiResourceManager& manager)
{
    const std::string_view whole = key;
    const std::size_t colon = whole.find(':', std::min(whole.find('#'), whole.size()));
    if (colon == std::string_view::npos)
    {
        return key;
    }
    const std::size_t mark = whole.rfind('#', colon); // no domain has a '#' in it
    const std::string_view domain = whole.substr(mark + 1, colon - mark - 1);
    std::string_view message = whole.substr(colon + 1);
    std::string_view text = manager.find(domain, message);
    if (text.empty())
    {
        message = nameAtFront(message);
        text = manager.find(domain, message);
    }
    if (text.empty())
    {
        return key;
    }
    const std::string_view front = whole.substr(0, mark);
    const std::string_view behind = whole.substr(colon + 1 + message.size());
    std::string result;
    result.reserve(front.size() + text.size() + behind.size());
    result.append(front).append(text).append(behind);
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
