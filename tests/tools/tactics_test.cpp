// Tactical positions with known answers: fives to complete and to stop, open
// fours, wins by continuous fours from three to fifteen fours long under
// every rule, defences against such wins, and the Renju positions where a
// forbidden point decides: black's win that runs through one is no win, and
// white's four whose completion black may not take is one.
//
// Every answer is established here by a brute-force search written on the
// referee's rules code, which shares nothing with the engine's pattern
// tables; the frozen answers in the table must match it. The engine's threat
// search and its turn driver, searching with one thread and with four, must
// then agree with those answers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <cstdio>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

#include "board/board.h"
#include "board/zobrist.h"
#include "match/rules.h"
#include "protocol/engine_state.h"
#include "protocol/output.h"
#include "search/driver.h"
#include "search/engine_search.h"
#include "search/searcher.h"
#include "search/tt.h"
#include "search/vcf.h"

namespace zorva {
namespace {

using referee::Cell;
using referee::Rule;
using referee::Stone;

// Plies a win may take, as in the engine's threat search (kMaxVcfPlies).
constexpr int kPlyBudget = 40;

// ---------------------------------------------------------------------------
// The brute force: wins by continuous fours found by trying every cell with
// the referee's five and forbidden-point tests, with a table of positions
// already decided so that the exhaustive searches behind "no win" stay small.

uint64_t mixBits(uint64_t z) {
  z += 0x9E3779B97F4A7C15ull;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}
uint64_t stoneKey(int x, int y, Stone s) { return mixBits(uint64_t(x * 32 + y) * 3 + s); }

struct Verifier {
  referee::Board& b;
  Rule rule;
  int64_t nodes = 0;
  bool exhausted = false;  // the node limit cut a search short: a "no win" then proves nothing

  explicit Verifier(referee::Board& board, Rule r) : b(board), rule(r) {
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y)
        if (b.at(x, y) != referee::kEmpty) hash_ ^= stoneKey(x, y, b.at(x, y));
  }

  // Lets black play forbidden points: what black's wins, and white's, would
  // be without them. The decided positions no longer hold and are dropped.
  void ignoreForbidden(bool ignore) {
    ignoreForbidden_ = ignore;
    memo_.clear();
  }

  void put(int x, int y, Stone s) {
    b.set(x, y, s);
    hash_ ^= stoneKey(x, y, s);
  }
  void lift(int x, int y) {
    hash_ ^= stoneKey(x, y, b.at(x, y));
    b.set(x, y, referee::kEmpty);
  }

  bool five(int x, int y, Stone s) const { return referee::makesFive(b, x, y, s, rule); }
  bool forbidden(Stone s, int x, int y) {
    return !ignoreForbidden_ && rule == Rule::Renju && s == referee::kBlack && referee::isForbidden(b, x, y);
  }
  // A five is allowed even where the move would otherwise be forbidden.
  bool legal(Stone s, int x, int y) { return five(x, y, s) || !forbidden(s, x, y); }

  std::vector<Cell> fivePoints(Stone s) const {
    std::vector<Cell> points;
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y)
        if (b.at(x, y) == referee::kEmpty && five(x, y, s)) points.push_back({x, y});
    return points;
  }

  // Plies until `s`, to move, has a five point by continuous fours, or -1.
  int win(Stone s, int budget) {
    if (!fivePoints(s).empty()) return 0;
    if (budget < 2) return -1;
    if (++nodes > kNodeLimit) {
      exhausted = true;
      return -1;
    }
    const uint64_t key = hash_ ^ (s == referee::kWhite ? 0x5851F42D4C957F2Dull : 0);
    if (const auto found = memo_.find(key); found != memo_.end()) {
      if (found->second.win >= 0 && found->second.win <= budget) return found->second.win;
      if (budget <= found->second.fail) return -1;
    }
    // Two five points of the opponent cannot both be blocked; one must be,
    // and the block has to be a four of ours to keep the attack going.
    const std::vector<Cell> threats = fivePoints(referee::other(s));
    int result = -1;
    if (threats.size() <= 1)
      for (int x = 0; x < b.height() && result < 0; ++x)
        for (int y = 0; y < b.width() && result < 0; ++y) {
          if (b.at(x, y) != referee::kEmpty || (threats.size() == 1 && !(threats[0] == Cell{x, y}))) continue;
          if (isFour(s, x, y) && !forbidden(s, x, y)) result = afterFour(s, x, y, budget);
        }
    Memo& m = memo_[key];
    if (result >= 0)
      m.win = m.win < 0 ? int16_t(result) : std::min(m.win, int16_t(result));
    else if (!exhausted)
      m.fail = std::max(m.fail, int16_t(budget));
    return result;
  }

  // The fewest plies of a win by continuous fours, or -1.
  int shortest(Stone s) {
    for (int budget = 0; budget <= kPlyBudget; budget += 2)
      if (win(s, budget) >= 0) return budget;
    return -1;
  }

  // The fours that start a win within `budget` plies; the opponent has no five point.
  std::vector<Cell> winningFours(Stone s, int budget) {
    std::vector<Cell> moves;
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y)
        if (b.at(x, y) == referee::kEmpty && isFour(s, x, y) && !forbidden(s, x, y) && afterFour(s, x, y, budget) >= 0)
          moves.push_back({x, y});
    return moves;
  }

  // The moves of `s` after which the opponent has neither a five point nor a
  // win by continuous fours.
  std::vector<Cell> holdingMoves(Stone s) {
    std::vector<Cell> moves;
    for (int x = 0; x < b.height(); ++x)
      for (int y = 0; y < b.width(); ++y) {
        if (b.at(x, y) != referee::kEmpty || !legal(s, x, y)) continue;
        put(x, y, s);
        if (win(referee::other(s), kPlyBudget) < 0) moves.push_back({x, y});
        lift(x, y);
      }
    return moves;
  }

 private:
  static constexpr int64_t kNodeLimit = 2000000;
  struct Memo {
    int16_t win = -1;   // plies of a known win, or -1
    int16_t fail = -1;  // the largest budget known to hold no win, or -1
  };

  // Five points of `s` on the lines through (x, y), which holds an `s` stone.
  std::vector<Cell> fivePointsThrough(int x, int y, Stone s) const {
    std::vector<Cell> points;
    for (int d = 0; d < referee::kDirections; ++d)
      for (int k = -4; k <= 4; ++k) {
        const int px = x + k * referee::kDx[d], py = y + k * referee::kDy[d];
        if (k == 0 || !b.inside(px, py) || b.at(px, py) != referee::kEmpty || !five(px, py, s)) continue;
        if (std::find(points.begin(), points.end(), Cell{px, py}) == points.end()) points.push_back({px, py});
      }
    return points;
  }

  // Whether a stone of `s` on the empty cell makes a five point.
  bool isFour(Stone s, int x, int y) {
    bool near = false;  // a four needs three more stones of `s` within four steps on one line
    for (int d = 0; d < referee::kDirections && !near; ++d) {
      int n = 0;
      for (int k = -4; k <= 4; ++k) n += k != 0 && b.at(x + k * referee::kDx[d], y + k * referee::kDy[d]) == s;
      near = n >= 3;
    }
    if (!near) return false;
    put(x, y, s);
    const bool four = !fivePointsThrough(x, y, s).empty();
    lift(x, y);
    return four;
  }

  // Plies until `s` has a five point after its four on (x, y), or -1. Two
  // five points win, and so does one that black may not take.
  int afterFour(Stone s, int x, int y, int budget) {
    const Stone o = referee::other(s);
    put(x, y, s);
    const std::vector<Cell> fives = fivePointsThrough(x, y, s);
    int plies = -1;
    if (fives.size() >= 2 || (fives.size() == 1 && forbidden(o, fives[0].x, fives[0].y))) {
      plies = 2;
    } else if (fives.size() == 1 && budget >= 2) {
      put(fives[0].x, fives[0].y, o);
      const int rest = win(s, budget - 2);
      lift(fives[0].x, fives[0].y);
      if (rest >= 0) plies = rest + 2;
    }
    lift(x, y);
    return plies;
  }

  uint64_t hash_ = 0;
  bool ignoreForbidden_ = false;
  std::unordered_map<uint64_t, Memo> memo_;
};

// ---------------------------------------------------------------------------
// The positions. Cells are written as two letters, row then column, 'a' for
// 0: "hc" is row 7, column 2. The side to move follows from the counts (black
// moves when both have as many stones).

enum class Kind {
  Five,        // the side to move completes a five: the answer is its five points
  Block,       // the opponent has one five point: the block is the one move that does not lose
  OpenFour,    // the side to move wins in three plies by an open four (or two fours at once)
  Vcf,         // a win by continuous fours
  Defend,      // the opponent, not to move, wins by continuous fours; the answer is every move that stops it
  RenjuNoWin,  // black's only win by fours needs a forbidden point, so there is none
  RenjuTrap,   // white wins by a four whose completion black may not take
};

struct Tactic {
  const char* name;
  Kind kind;
  int rule;  // the engine's rule code
  int size;
  const char* black;
  const char* white;
  // Sorted by row, then column. Five: the five points (anything else only
  // delays the win). OpenFour, Vcf, RenjuTrap: every four that starts a win,
  // however long. Block, Defend: the moves after which the opponent has
  // neither a five nor a win by fours. RenjuNoWin: empty.
  const char* answer;
  // The fewest fours of the win: the side to move's, the opponent's for
  // Defend, and for RenjuNoWin the win black would have without forbidden points.
  int fours;
};

// Found once by seeded generators (play-like random positions, and chains of
// fours laid out with capped ends for the long wins), filtered by the brute
// force, and frozen; the Renju cases and the exact-five cases are made by hand.
// Defence positions are kept only where the side to move is not lost anyway
// (no forced loss seen eight plies deep): where the moves that stop the fours
// lose to threes as well, every move loses and none is a fair answer.
const Tactic kTactics[] = {
    {"five_black_freestyle_15", Kind::Five, kFreestyle, 15,
     "fjhlhmiokjkkklknlklmmioj", "hjhnimjnkollmjmkmlmmnhni",
     "km", 0},
    {"five_white_standard_20", Kind::Five, kStandard, 20,
     "hihmilimjkjljnknmkmmpnql", "hkhlikjmkikkklkmlkolqm",
     "kj", 0},
    {"five_white_renju_15", Kind::Five, kRenju, 15,
     "hhjejhkakbkdlalhmcmdmfnf", "ifjckckfkhlcldlelgmgnd",
     "lf", 0},
    {"five_black_standard_not_the_overline", Kind::Five, kStandard, 15,
     "hdhehfhghi", "jdjejfkkbm",
     "hc", 0},
    {"five_black_renju_not_the_overline", Kind::Five, kRenju, 15,
     "hdhehfhghi", "mnbbbnnbjj",
     "hc", 0},
    {"five_white_renju_overline_wins", Kind::Five, kRenju, 15,
     "cccmkkmbnndm", "hdhehfhghi",
     "hchh", 0},
    {"block_white_freestyle_15", Kind::Block, kFreestyle, 15,
     "cndoemeofohghnhoiiijjikf", "cmcodmdnenfngjhfhlihjh",
     "go", 0},
    {"block_black_standard_15", Kind::Block, kStandard, 15,
     "eefgfigeheifigihiijejgjilg", "eiggghhfhghhieijjfjhjjkfmg",
     "fh", 0},
    {"block_black_freestyle_20", Kind::Block, kFreestyle, 20,
     "kkklmknhojolriskslsntktlto", "lilmmimmnjpkqirkrlrnrosmtm",
     "rm", 0},
    {"block_black_renju_15", Kind::Block, kRenju, 15,
     "aiakbibkbncickcmdkfkhkhl", "ajalambjblbmcjcldjflfmgj",
     "ej", 0},
    {"block_white_renju_20", Kind::Block, kRenju, 20,
     "gggkglhoihiiikiljojplimj", "gjhkhlhniginjijljnkkkm",
     "ij", 0},
    {"block_black_standard_the_six_is_no_five", Kind::Block, kStandard, 15,
     "ccdlmbjjkk", "hdhehfhghi",
     "hc", 0},
    {"open_four_black_freestyle_15", Kind::OpenFour, kFreestyle, 15,
     "adcecfdddedhfegcgegfhhhj", "afbdcgdcdgedeeegfdfffhhd",
     "gd", 1},
    {"open_four_white_standard_15", Kind::OpenFour, kStandard, 15,
     "eheifgfjgbggghhehjieifii", "cicjdgfhfkgfgjhfidigjh",
     "geki", 1},
    {"open_four_white_freestyle_20", Kind::OpenFour, kFreestyle, 20,
     "injkjlljlllnmkmmmnninmno", "hliljmkllklmlomjnknlnn",
     "kn", 1},
    {"open_four_black_renju_15", Kind::OpenFour, kRenju, 15,
     "bhcecfdddfefehfdfffghfic", "bfchcjdedgeceegeggghhghh",
     "fe", 1},
    {"open_four_white_renju_20", Kind::OpenFour, kRenju, 20,
     "jljrkjkslnlpmmmpmqnonqpr", "jnkmkqlqmkmomrnpnropoq",
     "ll", 1},
    {"open_four_black_standard_20", Kind::OpenFour, kStandard, 20,
     "ilinjjjmkjknlklmlnmknjnm", "hjihijjkjlklkmljllmmmnnk",
     "gjhkhnjnlomlmp", 1},
    {"vcf3_black_freestyle_15", Kind::Vcf, kFreestyle, 15,
     "hfjfjglgmdmemgmhndnhofoh", "hhkdkekflfmfnenfngodoeog",
     "kglh", 3},
    {"vcf4_white_freestyle_15", Kind::Vcf, kFreestyle, 15,
     "ebfafcgchahbhdhfifjbjejf", "dafbgagehciaidiejajckd",
     "ib", 4},
    {"vcf4_black_standard_15", Kind::Vcf, kStandard, 15,
     "iiijimjhkkknlmlnlomjmkmmmonkolomon", "gjjjjnjoklkmkollmlmnnjnmnnnooiokoo",
     "iljkkhlilk", 4},
    {"vcf5_white_standard_15", Kind::Vcf, kStandard, 15,
     "dbdgeefafbfggagbgcgfhajc", "deedehfcgdgihbiaibicja",
     "bgcfhcid", 5},
    {"vcf3_white_renju_15", Kind::Vcf, kRenju, 15,
     "abbbcbcccdeceffdfggdhfhg", "aabccacedcddfeffhejejg",
     "ge", 3},
    {"vcf5_black_renju_15", Kind::Vcf, kRenju, 15,
     "fihhjjjmkikjkmliljlkmgmlmmnloiojokol", "iijgjhjikkklknlllnmhmimjmknjnknmohom",
     "hjijikimlm", 5},
    {"vcf3_white_freestyle_20", Kind::Vcf, kFreestyle, 20,
     "niokolqgqiqjqkrgrisjtetgth", "mmnknmogoiphpiqhsisktitk",
     "oj", 3},
    {"vcf6_white_standard_20", Kind::Vcf, kStandard, 20,
     "aialambjbmcicjckdkejfgfiijikjgji", "ajbibkblchcldidjeigihihjhmihkh",
     "dgdmefenhk", 6},
    {"vcf9_black_freestyle_15", Kind::Vcf, kFreestyle, 15,
     "bkbncmcodkeofmfngjglgnihjjkgkjlgljmfmh", "akanelfjflfogkhghliiijkflkmemkngnkofoj",
     "mj", 9},
    {"vcf8_white_freestyle_15", Kind::Vcf, kFreestyle, 15,
     "abahbabdbjbkccdgeaecfafhgbgnhejbjhjkjmkg", "afbfbhcbcddbelfgfifmgcgfhihjieiljcjdjg",
     "jf", 8},
    {"vcf11_white_freestyle_15", Kind::Vcf, kFreestyle, 15,
     "bhckdkdoecefemgbgehbhnieifikjbjikckfkmlbldmfmknk", "cgciedeeeiekenfcfhgdhkhmibicigijimjhkdlflhnioi",
     "fm", 11},
    {"vcf13_black_freestyle_15", Kind::Vcf, kFreestyle, 15,
     "clejekfffkfogohbhchihlhnifijjejflellmgmlninkoi", "bmckdmeffcfgfhgehahghjikiljdjnkflglmmemjngnmol",
     "hf", 13},
    {"vcf12_black_freestyle_20", Kind::Vcf, kFreestyle, 20,
     "elenfogcghgihchehihoidinjmkeliljmgminjpqqprmrnsltl", "bkcndiecerfggdgegkhbhqihiokckgkllalelknholqmqnrkrq",
     "gp", 12},
    {"vcf15_black_freestyle_20", Kind::Vcf, kFreestyle, 20,
     "amblcccecqdddiebedeofcflghgigohnhpijjeklkolclnmkmlncnhogpeqgqh",
     "bdbrcidaemfafgfhhdhghlhriiiojgjojtkslalfljlmmhmnnanloeqdqjrdrg",
     "hi", 15},
    {"vcf10_black_standard_15", Kind::Vcf, kStandard, 15,
     "cecfdfejfffkflgcghgohdhfhihnijiljhlknk", "bfbgbhccciecelfgfigfgmhbhhhmikkiljlmok",
     "jk", 10},
    {"vcf11_white_standard_15", Kind::Vcf, kStandard, 15,
     "acadajcmelfffnfogcgegggkglhghjimjdjilflomknmohon", "agahbebgbjcfdfdldmgmhfhkhnigiojoliljmmninlojom",
     "deedflki", 11},
    {"vcf13_white_standard_20", Kind::Vcf, kStandard, 20,
     "akbjccchcncsefehfafgfjflgcgqhbhdhjhpimipkgknlemcnhobqare",
     "blckcldhdndrfbfcfigdgegohlhmiljajmkckelcmgocoepbpfpgqe",
     "hk", 13},
    {"vcf14_white_standard_20", Kind::Vcf, kStandard, 20,
     "fcgfinitjnjtkakckfkgkmkplimcmimkmonfobohomonppqarbrhrmrsscsesotf",
     "idifiojcjgjmjqjrkjkkkqkrlkmampndneniocoiokpaphpoqcqmqorergrprq",
     "kl", 14},
    {"vcf15_white_standard_20", Kind::Vcf, kStandard, 20,
     "bfdfdkebedejfafgfhgagdhlidjfjkkbkclklnmcmgnjnoodqcqfqlqnrksitotp",
     "cgegehfcfdfjfkgbgfhfhjhkicjbjlkdkmldlfmkoeoopfpkpqqhqjqmqoqprn",
     "ik", 15},
    {"vcf7_black_renju_15", Kind::Vcf, kRenju, 15,
     "gjhijbjgkbkelcleljlkmgmjmlofog", "elhgigimjdjhjjkflalglimenmoeok",
     "ihmdne", 7},
    {"vcf13_black_renju_15", Kind::Vcf, kRenju, 15,
     "bkchdidkdnemenfhgegigohdhjhlidifiljjjkkmlelfllmemgninl", "akbgbjcedhdoelfdfigkhehmibihikiojbjdjijokikjklmmnengnm",
     "eg", 13},
    {"vcf11_white_renju_15", Kind::Vcf, kRenju, 15,
     "aeakbfbjbnfdfgfogdglgohfhlhnigijjdlelingnmoaohoj", "afagbkcndfdhdmdneeehejgkiljfjkldljmcmgmjnknloi",
     "ke", 11},
    {"vcf14_black_renju_20", Kind::Vcf, kRenju, 20,
     "dgdiegekeoflfpgngohhhjjrkekilglpmimlmmngnjnlompcpfqdqerfrg",
     "bhcededkdnfjglgrhnhqhtieikjgjhjtldlsmjmpnhnnokpgpnrcrisdtb",
     "mk", 14},
    {"vcf15_black_renju_20", Kind::Vcf, kRenju, 20,
     "aibjbkcbcecgcmdneaepeqfafffqgghbicifihijinjhjqkckdlsmemqnpnror",
     "ahakbabbbcbgbmcfdsenetfdfogngqhahdhhhjieikjcjmjrkbkhlcmtndnepr",
     "ii", 15},
    {"vcf11_white_renju_20", Kind::Vcf, kRenju, 20,
     "ajbibqcgcmdfdoesfdfjflgngphchihqjkkmljlpmnmqnhpk", "bkcicjcqdgdqenfhfifmfngdgfhehnhpiniokklllonkok",
     "lk", 11},
    {"vcf12_white_renju_20", Kind::Vcf, kRenju, 20,
     "brbscsdoemetfpgqhliniskgkmknktlkmkmtomotpjppqmrqsesn", "dqdreofmfngrgshmhqhsjmkpmimlmrnmoiokorpkpnpqqgqhrh",
     "gm", 12},
    {"defend_vcf3_black_freestyle_15", Kind::Defend, kFreestyle, 15,
     "fffkhlhmlkllml", "figggjgkhhikjj",
     "iikk", 3},
    {"defend_vcf7_black_freestyle_20", Kind::Defend, kFreestyle, 20,
     "cdcgefeggdhhjhjnkckgklknnbohqi", "ggghhgijjfjijljmmcmenfpfqgshth",
     "igkeldoe", 7},
    {"defend_vcf5_white_standard_15", Kind::Defend, kStandard, 15,
     "fefiflfmgjheigijjhmgnf", "eiejfdfhfnikilkjljoe",
     "fjfkhjjj", 5},
    {"defend_vcf3_white_freestyle_15", Kind::Defend, kFreestyle, 15,
     "ghhghhicidjfld", "gggiibihjimc",
     "ieifigjeke", 3},
    {"defend_vcf4_white_standard_15", Kind::Defend, kStandard, 15,
     "acbaccdadbecedgeif", "aabbcacbeeeffafc",
     "bccddcdddefdgdhf", 4},
    {"defend_vcf4_white_renju_15", Kind::Defend, kRenju, 15,
     "ecfjgbgegihbhhiaicjdlb", "dbdiekfeggifjhkdkema",
     "fdhfigjfkf", 4},
    {"defend_vcf2_black_renju_15", Kind::Defend, kRenju, 15,
     "aobjbncjckdlelfkfngm", "bibocmcodjdkejemflfm",
     "bmclcndmfigj", 2},
    {"defend_vcf4_white_standard_20", Kind::Defend, kStandard, 20,
     "blcmeiejenfhfkhgikilinjkjlkjljlm", "bmcjcldngggiglhjihijimjmjnknli",
     "gkhk", 4},
    {"defend_vcf3_black_standard_20", Kind::Defend, kStandard, 20,
     "jgkfkhldlkminenhol", "jfkglflgljmfnfngnl",
     "lhliogpf", 3},
    {"defend_vcf3_white_renju_20", Kind::Defend, kRenju, 20,
     "ihilimjjjmjnlkml", "hhhoikkjknlnmk",
     "jkjlklll", 3},
    {"defend_vcf3_black_renju_20", Kind::Defend, kRenju, 20,
     "ijjkkfkhljogqfqhsj", "jhlfmhnjohoiojpgrf",
     "lhnhphqdqeqgqiqj", 3},
    {"renju_no_win_double_four", Kind::RenjuNoWin, kRenju, 15,
     "hehfhgehfhgh", "hddhmmmccmbb",
     "", 1},
    {"renju_no_win_four_three_three", Kind::RenjuNoWin, kRenju, 15,
     "hehfhgfhghiijj", "hdmmmccmbbnnbn",
     "", 2},
    {"renju_no_win_overline", Kind::RenjuNoWin, kRenju, 15,
     "hehfhhhihjegfgggihji", "hdhkdgmmmccmbbnnbnmh",
     "", 2},
    {"renju_trap_double_three", Kind::RenjuTrap, kRenju, 15,
     "hfhgfhghcc", "ddeeffld",
     "gg", 1},
    {"renju_trap_double_four", Kind::RenjuTrap, kRenju, 15,
     "jgjhjigjhjijeo", "jffjhlgmfnmc",
     "ik", 1},
    {"renju_trap_overline", Kind::RenjuTrap, kRenju, 15,
     "hdhehfhhhicg", "dgegfgmmmb",
     "gg", 1},
    {"renju_trap_split_four_split_three_20", Kind::RenjuTrap, kRenju, 20,
     "khkihkjk", "hhiill",
     "jj", 1},
    {"renju_trap_built_by_the_block", Kind::RenjuTrap, kRenju, 15,
     "hfhgfhccgmmmnb", "ddeeffgjgkgl",
     "gi", 2},
    {"renju_trap_double_four_20", Kind::RenjuTrap, kRenju, 20,
     "mcmdmenfofpfib", "mbqfjckdledp",
     "ng", 1},
    {"renju_false_vcf7_15", Kind::RenjuNoWin, kRenju, 15,
     "ecedfbffgghbhdheidifjc", "dcebfcfegcgegfhchfhgie",
     "", 7},
    {"renju_false_vcf2_15", Kind::RenjuNoWin, kRenju, 15,
     "fghghhhiijjgjhjikikjmjnhnk", "ghgjhjifihjfjjkgkklhliljmk",
     "", 2},
    {"renju_false_vcf2_20", Kind::RenjuNoWin, kRenju, 20,
     "klkmliljmlmmolonopplpmqmqnrl", "jkkillmnmonknmnnojoopoqjrmro",
     "", 2},
    {"renju_false_vcf1_20", Kind::RenjuNoWin, kRenju, 20,
     "iljljnklkmlklmmkmmnlnnnopjpk", "ikjkjmkjkklllnmlmnnkojokpmpn",
     "", 1},
    {"renju_trap_vcf1_15", Kind::RenjuTrap, kRenju, 15,
     "cldgeififmgjhjhlijikimjnkikmkn", "bldkfhflghgiglhghkiljijkjmmn",
     "jl", 1},
    {"renju_trap_vcf2_20", Kind::RenjuTrap, kRenju, 20,
     "djekflgkglhiijiminjjjn", "cidlelhjhkhliiikiljk",
     "lk", 2},
};

std::ostream& operator<<(std::ostream& out, const Tactic& t) { return out << t.name; }

Rule refereeRule(int rule) {
  return rule == kRenju ? Rule::Renju : rule == kStandard ? Rule::ExactFive : Rule::Freestyle;
}

std::vector<Cell> cellsOf(const char* text) {
  std::vector<Cell> cells;
  for (; text[0] && text[1]; text += 2) cells.push_back({text[0] - 'a', text[1] - 'a'});
  return cells;
}

std::string cellsText(std::vector<Cell> cells) {
  std::sort(cells.begin(), cells.end(), [](Cell a, Cell b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
  std::string text;
  for (const Cell& c : cells) text += {char('a' + c.x), char('a' + c.y)};
  return text;
}

std::string moveText(Move m) { return m == kNoMove ? "none" : std::string{char('a' + rowOf(m)), char('a' + colOf(m))}; }

bool inAnswer(const Tactic& t, Move m) {
  for (const Cell& c : cellsOf(t.answer))
    if (makeMove(c.x, c.y) == m) return true;
  return false;
}

referee::Board refereeBoard(const Tactic& t) {
  referee::Board b(t.size, t.size);
  for (const Cell& c : cellsOf(t.black)) b.set(c.x, c.y, referee::kBlack);
  for (const Cell& c : cellsOf(t.white)) b.set(c.x, c.y, referee::kWhite);
  return b;
}

// Stones go down alternately, black first, as in a game.
void setUpBoard(Board& board, const Tactic& t) {
  board.reset(t.size, t.size, t.rule);
  const std::vector<Cell> black = cellsOf(t.black), white = cellsOf(t.white);
  for (size_t i = 0; i < std::max(black.size(), white.size()); ++i) {
    if (i < black.size()) board.placeStone(makeMove(black[i].x, black[i].y), BLACK);
    if (i < white.size()) board.placeStone(makeMove(white[i].x, white[i].y), WHITE);
  }
}

bool winKind(Kind k) { return k == Kind::Five || k == Kind::OpenFour || k == Kind::Vcf || k == Kind::RenjuTrap; }

// Deep enough for every answer here to be proven or seen; the threat search
// does the long wins at any depth.
constexpr int kDriverDepth = 6;

// The settings a turn here changes, put back afterwards for the other tests
// of the program.
class SavedSettings {
 public:
  SavedSettings() {
    for (size_t i = 0; i < std::size(kFields); ++i) saved_[i] = engine.settings.*kFields[i];
  }
  ~SavedSettings() {
    for (size_t i = 0; i < std::size(kFields); ++i) engine.settings.*kFields[i] = saved_[i];
  }
  SavedSettings(const SavedSettings&) = delete;
  SavedSettings& operator=(const SavedSettings&) = delete;

 private:
  static constexpr Relaxed<int32_t> Settings::*kFields[] = {
      &Settings::rule, &Settings::timeoutTurn, &Settings::timeLeft, &Settings::timeIncrement,
      &Settings::startDepth, &Settings::maxDepth, &Settings::maxNode, &Settings::earlyStop,
      &Settings::showDetail, &Settings::threadNum, &Settings::threadSplitDepth, &Settings::hashSize};
  int32_t saved_[std::size(kFields)];
};

class TacticsTest : public ::testing::TestWithParam<Tactic> {
 protected:
  static void SetUpTestSuite() { initZobrist(); }
  void SetUp() override {
    engine.searchAborted = 0;
    engine.stopFlag = 0;
    engine.settings.maxNode = -1;  // no clock: the verdict must not depend on the machine's speed
  }

  // The threat search's plies to the five for `side`, or -1.
  static int threatSearchPlies(Searcher& s, Colour side) {
    s.clearThreatCache();
    const int32_t r = vcf(s, 0, side);
    return r > 0 ? kWin + kVcfDepthBase - r : -1;
  }

  // One turn of the engine on the position with `threads` search threads.
  static Move driverMove(const Tactic& t, int threads) {
    Settings& s = engine.settings;
    s.rule = t.rule;
    s.timeoutTurn = 100000000;
    s.timeLeft = 100000000;
    s.timeIncrement = 0;
    s.startDepth = 1;
    s.maxDepth = kDriverDepth;
    s.maxNode = -1;
    s.earlyStop = 1;
    s.showDetail = 0;
    s.threadNum = threads;
    s.threadSplitDepth = 2;  // low enough that helpers join at these depths
    s.hashSize = 16;
    engine.stopFlag = 0;
    engine.searchAborted = 0;
    engine.think.builtRule = -1;
    engine.think.finalValue = 0;
    engine.think.currentDepth = 0;
    std::fill(std::begin(engine.blockTable), std::end(engine.blockTable), 0);
    setUpBoard(engine.board, t);
    if (transpositionTable.allocated()) transpositionTable.clear();  // each run starts cold
    // The rule change prints a line; nothing here reads it.
    std::FILE* sink = std::fopen("/dev/null", "w");
    setOutput(sink);
    EngineSearch backend;
    const Move m = runTurnDriver(backend, engine.board, true);
    setOutput(nullptr);
    if (sink) std::fclose(sink);
    return m;
  }
};

TEST_P(TacticsTest, BruteForceOnTheRefereeRulesConfirmsTheAnswer) {
  const Tactic& t = GetParam();
  referee::Board b = refereeBoard(t);
  Verifier v(b, refereeRule(t.rule));
  const Stone x = b.toMove(), o = referee::other(x);
  const std::vector<Cell> ownFives = v.fivePoints(x), theirFives = v.fivePoints(o);
  if (t.kind != Kind::Five) {
    EXPECT_TRUE(ownFives.empty()) << "a five to complete would be the answer";
  }
  if (t.kind != Kind::Five && t.kind != Kind::Block) {
    EXPECT_TRUE(theirFives.empty()) << "a five to stop would be";
  }
  std::vector<Cell> answer;
  switch (t.kind) {
    case Kind::Five:
      answer = ownFives;
      break;
    case Kind::Block:
      ASSERT_EQ(theirFives.size(), 1u);
      answer = v.holdingMoves(x);
      EXPECT_EQ(cellsText(answer), cellsText(theirFives)) << "only the block may hold";
      break;
    case Kind::OpenFour:
    case Kind::Vcf:
    case Kind::RenjuTrap:
      EXPECT_EQ(v.shortest(x), 2 * t.fours);
      answer = v.winningFours(x, kPlyBudget);
      if (t.kind == Kind::RenjuTrap) {
        v.ignoreForbidden(true);
        EXPECT_EQ(v.win(x, kPlyBudget), -1) << "a black that could take every point would hold";
      }
      break;
    case Kind::Defend:
      EXPECT_EQ(v.shortest(o), 2 * t.fours);
      EXPECT_EQ(v.win(x, kPlyBudget), -1) << "the side to move must have no win of its own";
      answer = v.holdingMoves(x);
      break;
    case Kind::RenjuNoWin:
      EXPECT_EQ(x, referee::kBlack);
      EXPECT_EQ(v.win(x, kPlyBudget), -1);
      v.ignoreForbidden(true);
      EXPECT_EQ(v.shortest(x), 2 * t.fours) << "the win the forbidden points take away";
      break;
  }
  EXPECT_FALSE(v.exhausted) << "the brute force ran out of nodes";
  EXPECT_EQ(cellsText(answer), t.answer);
  if (t.kind != Kind::RenjuNoWin) {
    EXPECT_FALSE(answer.empty());
  }
}

TEST_P(TacticsTest, ThreatSearchAgrees) {
  const Tactic& t = GetParam();
  Searcher& s = searcher(0);
  setUpBoard(s.board, t);
  const Colour side = s.board.sideToMove(), other = opponent(side);
  if (winKind(t.kind)) {
    const int plies = threatSearchPlies(s, side);
    ASSERT_GE(plies, 0) << "no win found";
    EXPECT_GE(plies, 2 * t.fours) << "a win shorter than the shortest there is";
    s.clearThreatCache();
    const Move m = quickWinMove(s, side);
    EXPECT_TRUE(inAnswer(t, m)) << "starts with " << moveText(m) << ", answers " << t.answer;
  } else if (t.kind == Kind::RenjuNoWin) {
    EXPECT_EQ(threatSearchPlies(s, side), -1);
    s.clearThreatCache();
    EXPECT_EQ(quickWinMove(s, side), kNoMove);
  } else {
    // The opponent's win is seen, and every holding move stops it.
    EXPECT_GE(threatSearchPlies(s, other), 0);
    for (const Cell& c : cellsOf(t.answer)) {
      s.board.placeStone(makeMove(c.x, c.y), side);
      EXPECT_EQ(threatSearchPlies(s, other), -1) << "after " << moveText(makeMove(c.x, c.y));
      s.board.removeStone(makeMove(c.x, c.y));
    }
  }
}

TEST_P(TacticsTest, TurnDriverPlaysAnAnswerWithOneAndFourThreads) {
  const Tactic& t = GetParam();
  const SavedSettings saved;
  referee::Board b = refereeBoard(t);
  for (int threads : {1, 4}) {
    const Move m = driverMove(t, threads);
    ASSERT_NE(m, kNoMove);
    ASSERT_EQ(b.at(rowOf(m), colOf(m)), referee::kEmpty) << moveText(m) << " with " << threads << " threads";
    if (t.kind == Kind::RenjuNoWin) {
      EXPECT_FALSE(referee::isForbidden(b, rowOf(m), colOf(m)))
          << "played the forbidden " << moveText(m) << " with " << threads << " threads";
    } else {
      EXPECT_TRUE(inAnswer(t, m)) << "played " << moveText(m) << " with " << threads << " threads, answers "
                                  << t.answer;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Tactics, TacticsTest, ::testing::ValuesIn(kTactics),
                         [](const ::testing::TestParamInfo<Tactic>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zorva
