#include "driverhost/DotShapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "halftone/ReadScreeningParams.h"

namespace {

constexpr double kPi = std::numbers::pi;

double Square2(double x, double y) {
    return x * x + y * y;
}

// The predefined spot functions of ISO 32000-1, table 128.

double CosineDot(double x, double y) {
    return (std::cos(kPi * x) + std::cos(kPi * y)) / 2;
}
double Cross(double x, double y) {
    return -std::min(std::abs(x), std::abs(y));
}
double Round(double x, double y) {
    const double a = std::abs(x);
    const double b = std::abs(y);
    return a + b <= 1 ? 1 - Square2(a, b) : Square2(a - 1, b - 1) - 1;
}
double Diamond(double x, double y) {
    const double a = std::abs(x);
    const double b = std::abs(y);
    if (a + b > 0.75 && a + b <= 1.23) return 1 - (0.85 * a + b);
    return a + b <= 0.75 ? 1 - Square2(a, b) : Square2(a - 1, b - 1) - 1;
}
double DoubleDot(double x, double y) {
    return (std::sin(2 * kPi * x) + std::sin(2 * kPi * y)) / 2;
}
double Double(double x, double y) {
    return (std::sin(kPi * x) + std::sin(2 * kPi * y)) / 2;
}
double Ellipse(double x, double y) {
    const double a = std::abs(x);
    const double b = std::abs(y);
    const double side = 3 * a + 4 * b - 3;
    if (side < 0) return 1 - Square2(a, b / 0.75) / 4;
    return side > 1 ? Square2(1 - a, (1 - b) / 0.75) / 4 - 1 : 0.5 - side;
}
double InvertedDouble(double x, double y) {
    return -Double(x, y);
}
double InvertedDoubleDot(double x, double y) {
    return -DoubleDot(x, y);
}
double SimpleDot(double x, double y) {
    return 1 - Square2(x, y);
}
double InvertedSimpleDot(double x, double y) {
    return -SimpleDot(x, y);
}
double Line(double /*x*/, double y) {
    return -std::abs(y);
}
double LineX(double x, double /*y*/) {
    return x;
}
double LineY(double /*x*/, double y) {
    return y;
}
double Rhomboid(double x, double y) {
    return (0.9 * std::abs(x) + std::abs(y)) / 2;
}
double Square(double x, double y) {
    return -std::max(std::abs(x), std::abs(y));
}

/// In the order of the names.
constexpr std::array<DotShape, kShapeNames.size()> kShapes = {
    CosineDot,         Cross,   Diamond,        Double,
    DoubleDot,         Ellipse, InvertedDouble, InvertedDoubleDot,
    InvertedSimpleDot, Line,    LineX,          LineY,
    Rhomboid,          Round,   SimpleDot,      Square};

}  // namespace

DotShape FindDotShape(std::string_view name) {
    const auto* const found = std::find(kShapeNames.begin(), kShapeNames.end(), name);
    if (found == kShapeNames.end()) return nullptr;
    return kShapes[static_cast<std::size_t>(found - kShapeNames.begin())];
}
