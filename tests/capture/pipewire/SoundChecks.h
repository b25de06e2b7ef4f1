#pragma once

#include "capture/pipewire/HeardSound.h"

namespace vesk::capture::pipewire::test {

/// Expects blocks in the order of their time, that come soon after it, and whose positions tell of
/// no loss that their stamps do not tell of.
void expectGoodTimes(const std::vector<HeardSound::Block>& blocks, int channels);

/// How far the stamps are off at the worst, in seconds, in sound made by secondRamp(). Blocks of
/// silence do not count.
double worstStampError(const std::vector<HeardSound::Block>& blocks);

}  // namespace vesk::capture::pipewire::test
