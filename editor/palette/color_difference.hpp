#pragma once

#include "kodo/render/colour.hpp"

/// A colour in CIE L*a*b*, white point D65.
struct LabColor
{
    double l = 0;
    double a = 0;
    double b = 0;
};

/// Reads the colour as sRGB (IEC 61966-2-1); components are brought into 0 to 1, alpha does not count.
LabColor toLab(const Kodo::Render::ColourRGBAFloat& color);

/// How different two colours look, by CIEDE2000 with all parametric factors 1; about 1 is just noticeable.
/// Formulas: G. Sharma, W. Wu, E. N. Dalal, "The CIEDE2000 color-difference formula: implementation notes,
/// supplementary test data, and mathematical observations", Color Research and Application 30 (2005).
double perceptualDistance(const LabColor& first, const LabColor& second);
