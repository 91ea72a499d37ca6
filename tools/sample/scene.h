#pragma once

#include <functional>

#include "sample/catalogue.h"
#include "sample/random.h"

namespace toplist::site {

/// Red, green and blue from 0 to 1.
struct Color {
  double red = 0, green = 0, blue = 0;
};

/// A picture as the colour of each of its points: x from 0 to 4/3 rightwards, y from 0 to 1 down.
using Scene = std::function<Color(double x, double y)>;

/// A scene that suits the theme; what `random` draws sets its colours and shapes.
Scene make_scene(Theme theme, Random& random);

}  // namespace toplist::site
