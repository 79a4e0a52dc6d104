#pragma once

#include "foundation/savedblock.h"

/// The settings of a block, a line each, with a line for each row of the two lists. Of a row only
/// what isn't 0 or empty is shown.
QStringList describe(const SavedBlock &block);
