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

#include <ostream>
#include <string>
#include <vector>

#include "board/board.h"
#include "board/zobrist.h"
#include "match/rules.h"
#include "search/searcher.h"
#include "search/vcf.h"
#include "tools/referee_search.h"

namespace zorva {
namespace {

using namespace tactics;

// ---------------------------------------------------------------------------
// The positions, written as referee_search.h describes.

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

bool inAnswer(const Tactic& t, Move m) { return inCells(t.answer, m); }

referee::Board refereeBoard(const Tactic& t) { return tactics::refereeBoard(t.size, t.black, t.white); }

bool winKind(Kind k) { return k == Kind::Five || k == Kind::OpenFour || k == Kind::Vcf || k == Kind::RenjuTrap; }

// Deep enough for every answer here to be proven or seen; the threat search
// does the long wins at any depth.
constexpr int kDriverDepth = 6;

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
    return engineTurn(t.rule, t.size, t.black, t.white, {.threads = threads, .maxDepth = kDriverDepth});
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
  setUpBoard(s.board, t.rule, t.size, t.black, t.white);
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
