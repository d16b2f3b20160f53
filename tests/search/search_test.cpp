// The threat search and the node search on positions with known answers.
#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>
#include <vector>

#include "board/forbid.h"
#include "board/zobrist.h"
#include "protocol/engine_state.h"
#include "search/block_paths.h"
#include "search/search.h"
#include "search/searcher.h"
#include "search/tt.h"
#include "search/vcf.h"
#include "protocol/engine_search.h"

namespace zorva {
namespace {

using Cells = std::initializer_list<std::pair<int, int>>;

class SearchTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    initZobrist();
    transpositionTable.resize(16);
  }
  void SetUp() override {
    transpositionTable.clear();
    engine.search.aborted = 0;
    engine.stopFlag = 0;
    engine.settings.maxNode = -1;  // no time limit: results must not depend on the clock
    prepareSearchContext();
    s.clearOrdering();
  }
  void setUp(int rule, Cells black, Cells white) {
    s.board.reset(15, 15, rule);
    for (auto [r, c] : black) s.board.placeStone(makeMove(r, c), BLACK);
    for (auto [r, c] : white) s.board.placeStone(makeMove(r, c), WHITE);
  }
  Searcher& s = searcher(1);
};

// Black: a closed three in row 7 and one in column 7 meet at (7,7), which
// makes two fours at once.
const Cells kDoubleFourBlack = {{7, 4}, {7, 5}, {7, 6}, {4, 7}, {5, 7}, {6, 7}};
const Cells kDoubleFourWhite = {{7, 3}, {3, 7}, {0, 0}, {0, 2}, {0, 4}, {14, 14}};

TEST_F(SearchTest, ThreatSearchFindsTheDoubleFour) {
  setUp(kFreestyle, kDoubleFourBlack, kDoubleFourWhite);
  const int32_t r = vcf(s, 6, BLACK);
  ASSERT_GT(r, 0);
  EXPECT_EQ(6 - kVcfDepthBase + r, kWin + 6 - 2) << "the five stands two plies later";
  EXPECT_EQ(quickWinMove(s, BLACK), makeMove(7, 7));
  EXPECT_EQ(vcf(s, 6, WHITE), 0);
}

TEST_F(SearchTest, RenjuBlackMayNotWinByADoubleFour) {
  setUp(kRenju, kDoubleFourBlack, kDoubleFourWhite);
  EXPECT_EQ(vcf(s, 6, BLACK), 0);
  EXPECT_EQ(quickWinMove(s, BLACK), kNoMove);
  setUp(kRenju, kDoubleFourWhite, kDoubleFourBlack);  // the same shape is white's
  s.board.placeStone(makeMove(10, 10), BLACK);        // and white is to move
  EXPECT_GT(vcf(s, 6, WHITE), 0);
}

TEST_F(SearchTest, ThreatSearchFollowsAChainOfFours) {
  // Black fours in row 7 force white's blocks until the column four meets them.
  setUp(kFreestyle, {{7, 2}, {7, 3}, {7, 5}, {5, 6}, {4, 6}, {3, 6}}, {{7, 1}, {2, 6}, {0, 0}, {0, 14}, {14, 0}, {14, 14}});
  const int32_t r = vcf(s, 8, BLACK);
  ASSERT_GT(r, 0);
  EXPECT_EQ(s.board.hash, [&] {
    Board copy = s.board;
    copy.rebuild();
    return copy.hash;
  }()) << "the board is left as found";
}

// From a self-play game: black wins by seven fours, one of them a four that
// dies with its block and builds nothing but dead twos, a four the node
// search's quick run skips. The full search asked next must not reuse that
// run's failure.
TEST_F(SearchTest, QuickFoursSearchMissesTheRareWinAndTheFullOneStillFindsIt) {
  setUp(kFreestyle, {{7, 8}, {4, 5}, {4, 8}, {6, 5}, {5, 5}, {3, 6}, {5, 4}, {3, 3}, {3, 5}, {4, 4}},
        {{6, 10}, {5, 6}, {4, 7}, {5, 8}, {7, 5}, {6, 4}, {6, 3}, {3, 2}, {2, 5}, {6, 6}});
  s.clearThreatCache();
  ASSERT_EQ(s.board.sideToMove(), BLACK);
  EXPECT_EQ(vcf(s, 6, BLACK), 0);
  EXPECT_EQ(vcfPlies(s, BLACK, nullptr), 14);
}

// Nodes with no move to search: a full board is drawn, and Renju black
// whose every answer to white's open three is an overline has lost.
TEST_F(SearchTest, NodesWithoutAMove) {
  s.board.reset(4, 4, kFreestyle);
  for (int i = 0; i < 16; ++i) s.board.placeStone(makeMove(i / 4, i % 4), i % 2 ? WHITE : BLACK);
  EXPECT_EQ(searchNode(s, 3, 1, -2 * kWin, 2 * kWin, BLACK, 0), 0);

  // White's _OOO_ in row 7; black's columns 5, 6, 10 and 11 hold XXX_XX
  // around row 7, closed above by white, so each cell that answers the
  // three makes six for black and black has no four of its own.
  std::vector<std::pair<int, int>> black, white = {{7, 7}, {7, 8}, {7, 9}};
  for (int col : {5, 6, 10, 11}) {
    for (int row : {4, 5, 6, 8, 9}) black.push_back({row, col});
    white.push_back({3, col});
  }
  for (int row : {0, 2, 12})  // far apart: no white threat beside the three
    for (int col : {0, 3, 6, 9, 12})
      if (white.size() < black.size()) white.push_back({row, col});
  s.board.reset(15, 15, kRenju);
  for (auto [r, c] : black) s.board.placeStone(makeMove(r, c), BLACK);
  for (auto [r, c] : white) s.board.placeStone(makeMove(r, c), WHITE);
  for (int col : {5, 6, 10, 11}) ASSERT_TRUE(isForbidden(s.board, makeMove(7, col))) << col;
  EXPECT_LT(searchNode(s, 3, 1, -2 * kWin, 2 * kWin, BLACK, 0), -kProvenBound);
}

TEST_F(SearchTest, NodeSearchResults) {
  setUp(kFreestyle, {{7, 4}, {7, 5}, {7, 6}, {7, 7}}, {{8, 4}, {8, 5}, {8, 6}, {0, 0}});
  EXPECT_EQ(searchNode(s, 5, 0, -kWin * 2, kWin * 2, BLACK, 0), kWin + 5) << "a five point wins at once";
  // White to move must block; it cannot, black has two five points... but black's
  // row is closed on neither side: white loses.
  EXPECT_LT(searchNode(s, 4, 0, -kWin * 2, kWin * 2, WHITE, 0), -9000000);
}

TEST_F(SearchTest, RootPlaysTheWinAndBlocksTheLoss) {
  setUp(kFreestyle, kDoubleFourBlack, kDoubleFourWhite);
  engine.think.bestMove = kNoMove;
  const int32_t v = searchRoot(s, 3, BLACK);
  EXPECT_GT(v, 9000000);
  EXPECT_EQ(engine.think.bestMove, makeMove(7, 7));
  // An open three of white's: black must answer at one of its ends or far points.
  setUp(kFreestyle, {{10, 10}, {11, 12}, {2, 2}}, {{7, 6}, {7, 7}, {7, 8}});
  searchRoot(s, 4, BLACK);
  const Move m = engine.think.bestMove;
  EXPECT_EQ(rowOf(m), 7);
  EXPECT_TRUE(colOf(m) == 5 || colOf(m) == 9 || colOf(m) == 4 || colOf(m) == 10) << "played " << rowOf(m) << "," << colOf(m);
}

// A crowded Renju board (from a match game) where no empty cell lies on a
// line either side can still use, and the cell nearest the centre is an
// overline for black: the root must still choose a cell black may play.
TEST_F(SearchTest, RootFindsAPlayableMoveWhereNoCellMakesAShape) {
  s.board.reset(15, 15, kRenju);
  // Stones alternate black, white, ... as two-letter cells, row then column from 'a'.
  const char* game =
      "kclgmenigdhiokjekfkdlcjcldjbjdlemflfmglhlimhjfkeiehfhdgcfdidkbmdhgkhjhedfcfejinhohnfngjgihgfheebiief"
      "ffeeecegehjjkimimknloiojhjnjnkgkikijlbmaklljkklkkmkjmjjlfgcbdcceccbcdedfbddbfbfjlmkngijmjneidhchdgfi"
      "fkdjciilhkhlimcffhifcjdiglckdlejafelemhaibfafmhmcggaeaencliognjohonmonloblakabaiajfngbbndndkbknckomn"
      "jabmooolbhbioeofndkaobnbdogmdaeofloalabeacalbaadhhaaamll";
  for (int i = 0; game[i] && game[i + 1]; i += 2)
    s.board.placeStone(makeMove(game[i] - 'a', game[i + 1] - 'a'), s.board.sideToMove());
  ASSERT_TRUE(isForbidden(s.board, makeMove(6, 7)));
  engine.think.bestMove = kNoMove;
  searchRoot(s, 1, BLACK);
  const Move m = engine.think.bestMove;
  ASSERT_NE(m, kNoMove);
  EXPECT_EQ(s.board.at(m), EMPTY);
  EXPECT_FALSE(isForbidden(s.board, m));
}

TEST_F(SearchTest, RootStaysOutOfBlockedCellsAndPaths) {
  setUp(kFreestyle, kDoubleFourBlack, kDoubleFourWhite);
  const Move win = makeMove(7, 7);
  // The front end's key of the position after the win: its stones only.
  uint64_t key = zobristKeys[win][BLACK];
  for (int i = 0; i < s.board.moveCount; ++i) key ^= zobristKeys[s.board.moves[i]][s.board.at(s.board.moves[i])];
  BlockPaths& paths = engine.blockPaths;
  paths.reset();
  ASSERT_TRUE(paths.add(key));
  paths.mark(win);
  engine.think.bestMove = kNoMove;
  searchRoot(s, 3, BLACK);
  EXPECT_NE(engine.think.bestMove, win);
  EXPECT_NE(engine.think.bestMove, kNoMove);
  paths.remove(key);
  engine.blockTable[win] = 1;
  searchRoot(s, 3, BLACK);
  EXPECT_NE(engine.think.bestMove, win);
  engine.blockTable[win] = 0;
  searchRoot(s, 3, BLACK);
  EXPECT_EQ(engine.think.bestMove, win) << "free again once both are lifted";
  paths.reset();
}

TEST(BlockPathsTest, HoldsAtMostTheCapacityAndForgetsWhatIsRemoved) {
  static BlockPaths paths;  // too large for the stack
  paths.reset();
  for (uint64_t key = 1; key < BlockPaths::kCapacity; ++key) ASSERT_TRUE(paths.add(key * 0x9E3779B97F4A7C15ull));
  EXPECT_FALSE(paths.add(42)) << "entry 0 is never used, so the set is full one short of the capacity";
  EXPECT_TRUE(paths.contains(7 * 0x9E3779B97F4A7C15ull));
  paths.remove(7 * 0x9E3779B97F4A7C15ull);
  EXPECT_FALSE(paths.contains(7 * 0x9E3779B97F4A7C15ull));
  EXPECT_TRUE(paths.contains(8 * 0x9E3779B97F4A7C15ull));
  EXPECT_TRUE(paths.add(42));
  paths.reset();
  EXPECT_FALSE(paths.contains(42));
  EXPECT_EQ(paths.count(), 1);
}

}  // namespace
}  // namespace zorva
