#pragma once

#include "kodo/export.hpp"

#include <string>

namespace Kodo::Loom
{
class UiResourceManager;
}

namespace Kodo::Loom::UiResourceUtils
{

/// Translates a key "#domain:message", or a text that holds one: what stands around it stays. The message is
/// all that stands behind the ':' where the catalogue has that, and else the name which that begins with
/// (docs/localization.md). A key that leads to no translation comes back as it stands. Throws only for want
/// of memory, and takes none but the result's once the catalogue is loaded.
KODO_API std::string getTranslatedText(const std::string& key, const UiResourceManager& manager);

/// The language that managers speak whose resource map is read from now on; empty for the one that each map
/// names. Managers that have read theirs go on as they were.
KODO_API void setCurrentLanguage(const std::string& language);
KODO_API std::string currentLanguage();

} // namespace Kodo::Loom::UiResourceUtils
