#pragma once

#include "benchmarks/ratio_report.hpp"

#include <vector>

/// Registers what a view does with its curve: sampling, following the model, drawing.
void registerCurveView(std::vector<Ratio>& ratios);
