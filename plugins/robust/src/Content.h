#pragma once

#include "Field.h"
#include "SliceImage.h"

namespace robust {

/// What of a slice can be compared, as shares from 0 to 1.
struct Content {
  Field valid;    ///< the slice shows something here: neither masked out nor padding
  Field relevant; ///< something else than plain background, or near to it
};

/// Padding and background are what is connected with the border and of one constant colour.
///
/// Where what is left fills a polygon with few corners, as a picture does that was moved and filled up, the
/// constant colour is padding: nothing is known there. Otherwise it is the background of the slide, which a
/// neighbour has to show, too; it is valid, but only its parts near the section tell something.
Content contentOf(const SliceImage& slice);

} // namespace robust
