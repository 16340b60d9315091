// Draws five colours that keep away from the scene's own, while a finalizer sees to what the program leaves
// behind: the last thing begun is the first to be ended, however the scope is left.

#include "kodo/core/kodo_random.hpp"
#include "tern_common/utils/color_generator.hpp"
#include "tern_common/utils/finalizer.hpp"

#include <cstdio>

namespace
{

void closeFile(void* file)
{
    std::fclose(static_cast<std::FILE*>(file));
    std::puts("file closed");
}

} // namespace

int main()
{
    Finalizer finalizer;
    std::FILE* const file = std::tmpfile();
    if (file == nullptr)
    {
        std::perror("no temporary file");
        return 1;
    }
    finalizer.add(file, &closeFile);
    finalizer.add([] { std::puts("colours done"); });

    Kodo::KodoRandom::instance().seed(7); // the same colours in every run
    ColorGenerator generator;
    generator.banColor(Kodo::Render::Colour32Bit(0xFF2CFFA6));
    for (int i = 0; i < 5; ++i)
    {
        const Kodo::Render::ColourRGBAFloat color = generator();
        std::printf("%.3f %.3f %.3f\n", static_cast<double>(color.r()), static_cast<double>(color.g()),
                    static_cast<double>(color.b()));
        std::fprintf(file, "%f\n", static_cast<double>(color.r()));
    }
    return 0; // runs "colours done", then closes the file
}
