#include "analysis/symmetry.h"

#include <algorithm>

namespace zorva {

namespace {

constexpr int kTransforms = 8;
constexpr int kRectangleTransforms = 4;  // the first four keep the sides' lengths

// Transform t of the cell (row, col) on a board of `height` rows and `width` columns.
Move transform(int t, int row, int col, int width, int height) {
  const int r = height - 1 - row, c = width - 1 - col;
  switch (t) {
    case 0: return makeMove(row, col);
    case 1: return makeMove(r, col);
    case 2: return makeMove(row, c);
    case 3: return makeMove(r, c);
    case 4: return makeMove(col, row);
    case 5: return makeMove(c, r);
    case 6: return makeMove(col, r);
    default: return makeMove(c, row);
  }
}

// The cell where the image of the position with `colour` on `m` under t
// differs from the position itself, when that is the only difference;
// kNoMove when t maps it to no position one such stone away.
Move imageStone(const Board& b, int t, Move m, Colour colour) {
  Move extra = kNoMove;
  for (int row = 0; row < b.height; ++row)
    for (int col = 0; col < b.width; ++col) {
      const Move from = makeMove(row, col);
      const Colour stone = from == m ? colour : b.at(from);
      const Move to = transform(t, row, col, b.width, b.height);
      if (stone == b.at(to)) continue;
      if (extra != kNoMove || stone != colour || b.at(to) != EMPTY) return kNoMove;
      extra = to;
    }
  return extra;
}

}  // namespace

int symmetricImages(const Board& b, Move m, Colour colour, Move* out) {
  const int transforms = b.width == b.height ? kTransforms : kRectangleTransforms;
  int count = 0;
  for (int t = 1; t < transforms; ++t) {
    const Move image = imageStone(b, t, m, colour);
    if (image != kNoMove && image != m && std::find(out, out + count, image) == out + count) out[count++] = image;
  }
  return count;
}

}  // namespace zorva
