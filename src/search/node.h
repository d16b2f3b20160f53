#pragma once
// What one node of the search shares between the thread that opened it and
// the threads that help it: its place in the tree, its window and its best
// moves so far. Used by the node search and the parallel search.
#include <cstdint>

#include "board/types.h"

namespace zorva {

struct Searcher;

constexpr int32_t kRootWindow = 100000000;
constexpr int32_t kProvenNode = 9000000;  // beyond this a value is a proven result
constexpr int32_t kNoEval = -kRootWindow;
constexpr int kTableMoves = 3;  // moves a table entry keeps

// The three best moves of a node, best first.
struct BestThree {
  int32_t values[3] = {-kRootWindow, -kRootWindow, -kRootWindow};
  Move moves[3] = {kNoMove, kNoMove, kNoMove};
  void add(int32_t value, Move m);
};

struct Node {
  Node(Searcher* searcher, int depth_, int ply_, int extension_, int32_t alpha_, int32_t beta_, Colour side_)
      : s(searcher),
        depth(depth_),
        ply(ply_),
        extension(extension_),
        effDepth(depth_ + (extension_ >> 1)),
        alpha(alpha_),
        beta(beta_),
        side(side_),
        nullWindow(beta_ - alpha_ == 1) {}

  Searcher* s;
  int depth;
  int ply;
  int extension;  // half plies added to the depth, accumulated from the root
  int effDepth;
  int32_t alpha;
  int32_t beta;
  Colour side;
  bool nullWindow;
  bool opponentFive = false;  // the opponent threatens five: reductions shrink
  int32_t staticEval = kNoEval;  // computed when first needed
  int searched = 0;           // moves searched so far
  BestThree best;
};

bool isHeuristic(int32_t value);

// Searches `m` below `n` with the principal-variation scheme against
// `alpha`: the first move with the node's window, later moves of a
// full-window node with a null window first. The value is for n.side.
int32_t searchChild(Node& n, Move m, int index, int32_t alpha);

// Folds one move's value into the node: raises heuristic values to alpha,
// keeps the three best, the principal variation and the window. True on a
// cut-off.
bool recordResult(Node& n, Move m, int32_t value);

// Makes the line of `ply` the move `m` followed by the best line of ply + 1.
void updatePv(Searcher& s, int ply, Move m);

}  // namespace zorva
