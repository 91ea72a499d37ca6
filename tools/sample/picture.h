#pragma once

#include <string>

#include "sample/scene.h"

namespace toplist::site {

/// The scene as a JPEG file of 240 x 180 pixels.
std::string encode_picture(const Scene& scene);

}  // namespace toplist::site
