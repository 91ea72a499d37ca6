#include "sample/scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>
#include <vector>

namespace toplist::site {
namespace {

constexpr double kWidth = 4.0 / 3.0;
constexpr double kTurn = 2.0 * std::numbers::pi;

Color mix(const Color& a, const Color& b, double share) {
  const double t = std::clamp(share, 0.0, 1.0);
  return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t,
          a.blue + (b.blue - a.blue) * t};
}

/// Hue in turns (0 red, 1/3 green, 2/3 blue); saturation and lightness from 0 to 1.
struct Hsl {
  double hue = 0, saturation = 0, lightness = 0;
};

/// Takes its values in braces, which are evaluated in order: as arguments of their own, random ones
/// would be drawn in an order that differs between compilers.
Color hsl(const Hsl& color) {
  const double middle = color.lightness;
  const double reach = color.saturation * std::min(middle, 1.0 - middle);
  const double twelfths = (color.hue - std::floor(color.hue)) * 12.0;
  const auto channel = [&](double shift) {
    const double k = std::fmod(shift + twelfths, 12.0);
    return middle - reach * std::max(-1.0, std::min({k - 3.0, 9.0 - k, 1.0}));
  };
  return {channel(0.0), channel(8.0), channel(4.0)};
}

struct Disc {
  double x = 0, y = 0, radius = 0;
  Color color;

  /// Distance of a point from the centre in radii: below 1 inside.
  [[nodiscard]] double distance(double px, double py) const {
    return std::hypot(px - x, py - y) / radius;
  }
};

/// `count` discs as drawn one after another by `draw(number)`.
template <typename Draw>
std::vector<Disc> draw_discs(int count, Draw draw) {
  std::vector<Disc> discs;
  discs.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) discs.push_back(draw(i));
  return discs;
}

/// The skyline of a row of hills or mountains: a sum of three waves.
class Ridge {
 public:
  Ridge(Random& random, double height, double roughness) : height_(height) {
    double size = roughness;
    for (Wave& wave : waves_) {
      wave = {size, random.between(3.0, 5.0) * roughness / size, random.between(0.0, kTurn)};
      size *= 0.45;
    }
  }

  [[nodiscard]] double at(double x) const {
    double y = height_;
    for (const Wave& wave : waves_) y += wave.size * std::sin(wave.frequency * x + wave.phase);
    return y;
  }

 private:
  struct Wave {
    double size = 0, frequency = 0, phase = 0;
  };
  double height_;
  std::array<Wave, 3> waves_{};
};

Scene mountains(Random& random) {
  const double hue = random.between(0.52, 0.68);
  const Color top = hsl({hue, 0.55, random.between(0.45, 0.7)});
  const Color low = hsl({random.between(0.02, 0.13), 0.85, 0.8});
  const Color near = hsl({random.between(0.28, 0.5), 0.45, 0.16});
  const Disc sun{random.between(0.2, 1.1), random.between(0.22, 0.45), 0.08,
                 hsl({0.13, 1.0, 0.93})};
  constexpr int kRidges = 5;
  std::vector<Ridge> ridges;
  ridges.reserve(kRidges);
  for (int i = 0; i < kRidges; ++i) ridges.emplace_back(random, 0.48 + 0.11 * i, 0.075 - 0.008 * i);
  return [=](double x, double y) {
    for (std::size_t i = ridges.size(); i-- > 0;) {
      const double depth = y - ridges[i].at(x);
      const Color body = mix(mix(low, top, 0.45), near, 0.12 + 0.22 * static_cast<double>(i));
      if (depth > 0) return mix(body, low, 0.16 - depth);
    }
    const Color air = mix(top, low, y * 1.6);
    const double glow = sun.distance(x, y);
    return glow < 1 ? sun.color : mix(sun.color, air, 0.45 + glow * 0.12);
  };
}

Scene sea(Random& random) {
  const double hue = random.between(0.5, 0.62);
  const Color top = hsl({hue + 0.04, 0.6, 0.62});
  const Color horizon = hsl({random.between(0.05, 0.14), 0.9, 0.86});
  const Color deep = hsl({hue, 0.65, 0.24});
  const Color sail = hsl({random.between(0.0, 0.12), 0.8, 0.62});
  const double line = random.between(0.42, 0.55);
  const double mast = random.between(0.35, 1.0);
  const double foot = line + random.between(0.08, 0.16);
  return [=](double x, double y) {
    const double up = foot - y;
    const double right = x - mast;
    if (up > 0.02 && up < 0.4 && right > -0.10 + up * 0.24 && right < 0.16 - up * 0.4) {
      return right < 0 ? mix(sail, {1, 1, 1}, 0.65) : sail;
    }
    if (up <= 0.02 && up > -0.035 && std::abs(right) < 0.15 + up * 1.2)
      return hsl({0.07, 0.4, 0.22});
    if (y < line) return mix(top, horizon, y / line);
    const double depth = (y - line) / (1.0 - line);
    const double wave =
        std::sin(40.0 * std::sqrt(depth + 0.02) + 0.9 * std::sin(x * 7.0 / (depth + 0.3)));
    return mix(mix(horizon, deep, 0.35 + depth), {1, 1, 1}, wave > 0.93 ? 0.35 : 0.0);
  };
}

Scene table(Random& random) {
  const Color cloth = hsl({random.between(0.0, 1.0), 0.5, 0.72});
  const Disc plate{kWidth / 2 + random.between(-0.08, 0.08), 0.52, 0.40, {0.98, 0.97, 0.95}};
  const double hue = random.between(0.0, 0.3);
  const std::vector<Disc> food = draw_discs(22, [&](int) {
    const double angle = random.between(0.0, kTurn);
    const double reach = 0.21 * std::sqrt(random.unit());
    return Disc{plate.x + reach * std::cos(angle), plate.y + reach * std::sin(angle),
                random.between(0.03, 0.075),
                hsl({hue + random.between(-0.06, 0.1), 0.7, random.between(0.35, 0.6)})};
  });
  return [=](double x, double y) {
    for (const Disc& piece : food) {
      const double d = piece.distance(x, y);
      if (d < 1) return mix(mix(piece.color, {1, 1, 1}, 0.35), piece.color, d + 0.2);
    }
    const double d = plate.distance(x, y);
    if (d < 0.72) return mix(plate.color, {0.8, 0.8, 0.82}, d * 0.35);
    if (d < 1) return mix(plate.color, {0.7, 0.7, 0.74}, std::abs(d - 0.86) < 0.015 ? 0.5 : 0.0);
    const int stripes =
        (std::fmod(x * 9.0, 1.0) < 0.5 ? 1 : 0) + (std::fmod(y * 9.0, 1.0) < 0.5 ? 1 : 0);
    const double shadow = std::clamp((d - 1.0) * 6.0, 0.0, 1.0);
    return mix(mix(cloth, {0.1, 0.1, 0.1}, 0.35), mix(cloth, {1, 1, 1}, 0.4 * stripes),
               0.5 + shadow * 0.5);
  };
}

Scene lights(Random& random) {
  const double hue = random.unit();
  const Color dark = hsl({hue, 0.5, 0.10});
  const Color glow = hsl({hue + 0.08, 0.55, 0.28});
  const std::vector<Disc> discs = draw_discs(34, [&](int) {
    return Disc{random.between(0.0, kWidth), random.between(0.1, 1.0), random.between(0.03, 0.13),
                hsl({hue + random.between(-0.12, 0.3), 0.85, random.between(0.5, 0.75)})};
  });
  return [=](double x, double y) {
    Color color = mix(dark, glow, y);
    for (const Disc& disc : discs) {
      const double d = disc.distance(x, y);
      if (d < 1) color = mix(color, disc.color, d > 0.88 ? 0.55 : 0.34);
    }
    return color;
  };
}

Scene board(Random& random) {
  const double hue = random.between(0.03, 0.14);
  const Color light = hsl({hue, 0.5, 0.82});
  const Color dark = hsl({hue + random.between(-0.03, 0.45), 0.45, 0.3});
  const Color wall = hsl({random.unit(), 0.25, 0.35});
  const double slide = random.between(0.0, 8.0);
  const std::vector<Disc> stones = draw_discs(5, [&](int i) {
    const double y = 0.46 + 0.1 * i;
    return Disc{random.between(0.15, kWidth - 0.15), y, 0.035 + 0.055 * (y - 0.4),
                random.unit() < 0.5 ? Color{0.95, 0.94, 0.9} : Color{0.1, 0.1, 0.12}};
  });
  return [=](double x, double y) {
    for (std::size_t i = stones.size(); i-- > 0;) {
      const double d = stones[i].distance(x, y);
      if (d < 1) return mix(mix(stones[i].color, {1, 1, 1}, 0.4), stones[i].color, d + 0.1);
    }
    if (y < 0.3) return mix(wall, {0.05, 0.05, 0.08}, 0.6 - y * 2.0);
    const double depth = 1.0 / (y - 0.12);
    const auto column = static_cast<long>(std::floor((x - kWidth / 2) * depth * 2.4 + slide));
    const auto row = static_cast<long>(std::floor(depth * 2.2));
    return mix((column + row) % 2 == 0 ? light : dark, wall, 0.9 - y * 1.6);
  };
}

/// The part of a flower that covers a point, if one does.
std::optional<Color> flower_at(const Disc& flower, double x, double y) {
  const double d = flower.distance(x, y);
  if (d >= 1) return std::nullopt;
  if (d < 0.3) return hsl({0.13, 0.9, 0.55});
  const double petal = 0.68 + 0.32 * std::cos(6.0 * std::atan2(y - flower.y, x - flower.x));
  if (d < petal) return mix(flower.color, {1, 1, 1}, 0.35 - d * 0.35);
  return std::nullopt;
}

Scene meadow(Random& random) {
  const Color air = hsl({random.between(0.5, 0.58), 0.6, 0.82});
  const Color grass = hsl({random.between(0.22, 0.34), 0.5, 0.34});
  const Ridge hill(random, 0.36, 0.04);
  const double hue = random.between(0.75, 1.1);
  const std::vector<Disc> flowers = draw_discs(46, [&](int i) {
    const double y = 0.46 + 0.5 * (i / 46.0);
    return Disc{random.between(0.0, kWidth), y, 0.02 + 0.11 * (y - 0.4),
                hsl({hue + random.between(-0.08, 0.08), 0.75, random.between(0.5, 0.72)})};
  });
  return [=](double x, double y) {
    for (std::size_t i = flowers.size(); i-- > 0;) {
      if (const auto color = flower_at(flowers[i], x, y)) return *color;
    }
    const double depth = y - hill.at(x);
    if (depth < 0) return mix(air, {1, 1, 1}, y);
    const double blade = 0.12 * std::sin(x * 140.0 + y * 30.0);
    return mix(mix(grass, air, 0.35), grass, depth * 2.5 + blade);
  };
}

Scene patchwork(Random& random) {
  const double hue = random.unit();
  std::array<Color, 5> cloth;
  for (Color& color : cloth)
    color = hsl({hue + random.between(-0.2, 0.2), 0.5, random.between(0.35, 0.85)});
  std::array<std::size_t, 64> pick{};
  for (std::size_t& which : pick) which = random.below(cloth.size());
  return [=](double x, double y) {
    const double u = x * 4.5;
    const double v = y * 4.5;
    const double across = u - std::floor(u);
    const double down = v - std::floor(v);
    const auto cell =
        static_cast<std::size_t>(std::floor(u)) + 8 * static_cast<std::size_t>(std::floor(v));
    const bool leaning = cell % 2 == 0;
    const double diagonal = leaning ? across - down : across + down - 1.0;
    const Color& color = cloth.at(pick.at((cell * 2 + (diagonal > 0 ? 1 : 0)) % pick.size()));
    const double edge = std::min({across, down, 1 - across, 1 - down, std::abs(diagonal)});
    return mix(mix(color, {0.15, 0.1, 0.1}, 0.3), color, edge * 18.0);
  };
}

Scene record(Random& random) {
  const double hue = random.unit();
  const Color wall = hsl({hue, 0.45, 0.72});
  const Color label = hsl({hue + random.between(0.3, 0.6), 0.7, 0.55});
  const Disc disc{random.between(0.45, 0.9), random.between(0.45, 0.6), 0.46, {0.08, 0.08, 0.09}};
  const double shine = random.between(0.0, kTurn);
  return [=](double x, double y) {
    const double d = disc.distance(x, y);
    if (d < 0.03) return wall;
    if (d < 0.33) return mix(label, {1, 1, 1}, std::abs(d - 0.2) < 0.01 ? 0.6 : 0.0);
    if (d < 1) {
      const double light = std::cos(2.0 * (std::atan2(y - disc.y, x - disc.x) - shine));
      const double groove = 0.06 * std::sin(d * 190.0);
      return mix(disc.color, {1, 1, 1}, groove + 0.3 * std::pow(std::max(0.0, light), 12.0));
    }
    return mix(mix(wall, {0, 0, 0}, 0.35), wall, (d - 1.0) * 5.0 + (x + y) * 0.1);
  };
}

Scene night(Random& random) {
  const Color top = hsl({random.between(0.6, 0.72), 0.6, 0.07});
  const Color low = hsl({random.between(0.45, 0.8), 0.55, 0.34});
  const Disc moon{random.between(0.25, 1.1), random.between(0.18, 0.4), 0.09, {0.98, 0.96, 0.86}};
  const Disc shade{moon.x + random.between(-0.07, 0.07), moon.y - 0.03, 0.085, {}};
  const Ridge ground(random, 0.84, 0.05);
  const std::vector<Disc> stars = draw_discs(110, [&](int) {
    return Disc{random.between(0.0, kWidth), random.between(0.0, 0.85),
                random.between(0.002, 0.007), mix(low, {1, 1, 1}, random.between(0.6, 1.0))};
  });
  return [=](double x, double y) {
    if (y > ground.at(x)) return mix(top, {0, 0, 0}, 0.5);
    if (moon.distance(x, y) < 1 && shade.distance(x, y) > 1) return moon.color;
    for (const Disc& star : stars) {
      if (star.distance(x, y) < 1) return star.color;
    }
    return mix(top, low, y * y * 1.2);
  };
}

/// In the order of Theme.
constexpr std::array kPainters = {mountains, sea,       table,  lights, board,
                                  meadow,    patchwork, record, night};

}  // namespace

Scene make_scene(Theme theme, Random& random) {
  return kPainters.at(static_cast<std::size_t>(theme))(random);
}

}  // namespace toplist::site
