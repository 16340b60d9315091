#pragma once

#include "kodo/core/kodo_random.hpp"
#include "kodo/render/colour.hpp"

#include <cmath>
#include <cstddef>
#include <vector>

/// The rule of the colour generator written down step by step, with every hue computed for every comparison:
/// what the real one is compared with, in results and in time. Draws from a generator of its own.
class PlainColorGenerator
{
public:
    using Color = Kodo::Render::ColourRGBAFloat;

    explicit PlainColorGenerator(Kodo::KodoRandom& random) : m_random(random) {}

    void banColor(const Color& color) { m_banned.push_back(color); }
    std::size_t drawCount() const { return m_drawCount; }

    Color operator()()
    {
        Color result(0.0F, 0.0F, 0.0F, 0.0F);
        int attempts = 0;
        for (;;)
        {
            const float value = m_random(90.0F, 100.0F);
            const float hue = m_random(0.0F, 360.0F);
            m_drawCount += 2;
            result = candidate(hue, value);
            bool tooClose = false;
            for (const Color& color : m_generated)
            {
                tooClose = isTooClose(color, result) || tooClose;
            }
            for (const Color& color : m_banned)
            {
                tooClose = isTooClose(color, result) || tooClose;
            }
            if (!tooClose)
            {
                break;
            }
            ++attempts;
            if (attempts == 10000)
            {
                m_generated.clear();
            }
        }
        m_generated.push_back(result);
        return result;
    }

    static float hue(const Color& color)
    {
        float max = color.r();
        max = color.g() > max ? color.g() : max;
        max = color.b() > max ? color.b() : max;
        float min = color.r();
        min = color.g() < min ? color.g() : min;
        min = color.b() < min ? color.b() : min;
        if (std::fabs(min - max) < 0.0004F)
        {
            return 0.0F;
        }
        float angle = 0.0F;
        if (max == color.g())
        {
            angle = ((color.b() - color.r()) / (max - min) + 2.0F) * 1.0471976F;
        }
        else
        {
            angle = ((color.r() - color.g()) / (max - min) + 4.0F) * 1.0471976F;
        }
        return angle > 3.1415927F ? angle - 6.2831855F : angle; // hues of colours lie between pi/3 and 5 pi/3
    }

private:
    static float clamp(float value, float low, float high)
    {
        return value < low ? low : value > high ? high : value;
    }

    static Color candidate(float hue, float value)
    {
        const float x = clamp(hue * (1.0F / 360.0F), 0.0F, 1.0F) * 6.0F;
        const float i = std::floor(x);
        const float f = x - i;
        const float s = clamp(100.0F * 0.01F, 0.0F, 1.0F);
        const float v = clamp(value * 0.01F, 0.0F, 1.0F);
        const float p = (1.0F - s) * v;
        const float q = (1.0F - f * s) * v;
        const float t = (1.0F - (1.0F - f) * s) * v;
        switch (static_cast<int>(i) % 6)
        {
        case 0:
            return scaled(v, t, p);
        case 1:
            return scaled(q, v, p);
        case 2:
            return scaled(p, v, t);
        case 3:
            return scaled(p, q, v);
        case 4:
            return scaled(t, p, v);
        default:
            return scaled(v, p, q);
        }
    }

    static Color scaled(float r, float g, float b)
    {
        const auto component = [](float unit) { return clamp(unit * 255.0F, 0.0F, 255.0F) * 0.003921569F; };
        return {component(r), component(g), component(b), 1.0F};
    }

    static bool isTooClose(const Color& first, const Color& second)
    {
        float distance = hue(first) - hue(second);
        if (!(distance >= 0.0F))
        {
            distance += 6.2831855F;
        }
        if (distance > 3.1415927F)
        {
            distance = 6.2831855F - distance;
        }
        return distance < 0.5235988F;
    }

    Kodo::KodoRandom& m_random;
    std::vector<Color> m_generated;
    std::vector<Color> m_banned;
    std::size_t m_drawCount = 0;
};
