// Loaded by localization_boundary_test: makes the library's localization and hands it out by its interface.

#include "tern_common/localization/localization.hpp"

#include "qua/symbol_visibility.hpp"

#include <memory>

namespace
{

std::unique_ptr<Localization> lent;

} // namespace

extern "C" QUA_SYMBOL_EXPORT ILocalization* lendLocalization();
extern "C" QUA_SYMBOL_EXPORT int isCached(const char* key);
extern "C" QUA_SYMBOL_EXPORT void takeLocalizationBack();

ILocalization* lendLocalization()
{
    lent = std::make_unique<Localization>();
    return lent.get();
}

int isCached(const char* key)
{
    return lent->translateByCache(key).empty() ? 0 : 1;
}

void takeLocalizationBack()
{
    lent.reset();
}
