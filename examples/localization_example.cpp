// The names of a game's carts and squares, in one language after another.
//
//     localization_example <resources> <catalogues>

#include "kodo/fs/multi_file_system.hpp"
#include "kodo/loom/ui_resource_utils.hpp"
#include "tern_common/localization/localization.hpp"

#include <iostream>

namespace
{

/// All that most of an editor knows of localization.
void show(ILocalization& names, const char* key)
{
    std::cout << "  " << key << ": " << names.translate(key) << '\n';
}

} // namespace

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i)
    {
        if (!Kodo::FS::fileSystem().addRoot(argv[i]))
        {
            std::cerr << argv[i] << " is no directory\n";
            return 1;
        }
    }
    for (const char* language : {"en", "nl"})
    {
        std::cout << language << '\n';
        Kodo::Loom::UiResourceUtils::setCurrentLanguage(language);
        Localization names; // reads the definitions, in this language
        show(names, "tea_cart");
        show(names, "hand_cart");
        show(names, "01_square");
        show(names, "#market:closed"); // not of the definitions: asked of the catalogue each time
        show(names, "wheelbarrow");    // of nothing: stays as it is
    }
    return 0;
}
