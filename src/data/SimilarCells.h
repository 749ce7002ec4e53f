#pragma once

#include <span>

#include "quillon/Variant.h"

namespace quillon {

/// Compares as many cells with as many others whatever their order: whether each pairs with an equal one.
bool AreSimilar(std::span<const Variant> left, std::span<const Variant> right);

}  // namespace quillon
