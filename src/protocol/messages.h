#pragma once
// Every fixed reply text of the protocol front end, in one place.

namespace zorva::reply {

inline constexpr char kEngineName[] = "Zorva";
inline constexpr char kEdition[] = "Deep ";
inline constexpr char kVersion[] = "0.1.0";
inline constexpr char kAuthor[] = "The Zorva developers";
inline constexpr char kCountry[] = "International";
inline constexpr char kWww[] = "n/a";

inline constexpr char kAbout[] = "name=\"%s\", author=\"%s\", version=\"%s\", country=\"%s\", www=\"%s\"";
inline constexpr char kGreeting[] = "MESSAGE %sZorva %s :-)";
inline constexpr char kOk[] = "OK";
inline constexpr char kMove[] = "%d,%d";
inline constexpr char kPass[] = "MESSAGE pass";
inline constexpr char kUnknown[] = "UNKNOWN";
inline constexpr char kUnknownCommand[] = "UNKNOWN command";

inline constexpr char kDraw[] = "MESSAGE DRAW %s";
inline constexpr char kDrawAccept[] = "ACCEPT";
inline constexpr char kDrawReject[] = "REJECT";
inline constexpr char kThanks[] = "MESSAGE Thanks :)";

inline constexpr char kErrorBoardSize[] = "ERROR size of the board";
inline constexpr char kErrorRectStart[] = "ERROR bad RECTSTART parameters";
inline constexpr char kErrorCoordinates[] = "ERROR bad coordinates";
inline constexpr char kErrorOpponentMove[] = "ERROR opponents's move [%d,%d]";
inline constexpr char kErrorOwnMove[] = "ERROR my move [%d,%d]";
inline constexpr char kErrorBlockMove[] = "ERROR board-block move [%d,%d]";
inline constexpr char kErrorBoardLine[] = "ERROR x,y,who or DONE expected after BOARD";

inline constexpr char kHashRefused[] =
    "MESSAGE Hash table of %llu MiB could not be allocated; searching with %llu MiB";

inline constexpr char kLearningMissing[] = "MESSAGE Learning file %s could not be read; built-in values in use";
inline constexpr char kLearningShort[] =
    "MESSAGE Learning file %s gives %d of %d values; built-in values for the rest";

// Standard error, once, when a person starts the engine at a terminal.
inline constexpr char kTerminalHint[] =
    "Zorva speaks the engine protocol on standard input: try START 15, then TURN 7,7 (END quits).\n";

// Lines of the extended commands.
inline constexpr char kInfoMaxThreads[] = "MESSAGE INFO MAX_THREAD_NUM %d";
inline constexpr char kInfoMaxHashSize[] = "MESSAGE INFO MAX_HASH_SIZE %d";
inline constexpr char kHashUsage[] = "MESSAGE Hash usage: %f / %f";
inline constexpr char kErrorTooManyBlockPaths[] = "ERROR too many block paths";
inline constexpr char kErrorCellLine[] = "ERROR x,y or DONE expected";
inline constexpr char kErrorCellRange[] = "ERROR cell [%d,%d] outside 0..21";
inline constexpr char kHashNotWritten[] = "MESSAGE Hash table could not be written to %s";
inline constexpr char kHashNothingToWrite[] = "MESSAGE Hash table is empty: no game has started; %s not written";
inline constexpr char kHashFileRefused[] = "MESSAGE Hash file %s refused: %s; the table is unchanged";
inline constexpr char kRefusedNoTable[] = "no game has started";
inline constexpr char kRefusedNotAHashFile[] = "not a hash dump";
inline constexpr char kRefusedVersion[] = "written by another version";
inline constexpr char kRefusedRule[] = "written under another rule";
inline constexpr char kRefusedSize[] = "written for another hash_size";
inline constexpr char kRefusedKeys[] = "written by another run of the engine";
inline constexpr char kRefusedTruncated[] = "truncated";
inline constexpr char kRefusedDamaged[] = "damaged (checksum)";
inline constexpr char kRefusedMemory[] = "no memory to read it into";

// Progress lines of the search.
inline constexpr char kDepthDone[] = "MESSAGE DETAIL DEPTH:%d-%d VAL:%d TIME:%ldms NODE:%dm [%c,%d]";
inline constexpr char kDepthCut[] = "MESSAGE DETAIL DEPTH:%d-%d* VAL:%d TIME:%ldms NODE:%dm [%c,%d]";
inline constexpr char kTurnSummary[] = "MESSAGE %d | %d | %ldms | %ld | %d %s";
inline constexpr char kTurnDepth[] = "MESSAGE Depth: %d-%d | Time: %ldms | Node: %dm";
inline constexpr char kTurnSpeed[] = "MESSAGE Speed: %ld | Evaluation: %d %s";
inline constexpr char kBestLine[] = "MESSAGE %s";
inline constexpr char kBestLineLabel[] = "Bestline: ";
inline constexpr char kBlockedCells[] = "MESSAGE Block%s";
inline constexpr char kRule[] = "MESSAGE Rule %s";
inline constexpr char kConfigError[] = "ERROR (config) %s";
inline constexpr char kRealtimePv[] = "MESSAGE REALTIME PV";
// The root's lines per root move (row and column from 0) and per depth.
inline constexpr char kRealtimeRefresh[] = "MESSAGE REALTIME REFRESH";
inline constexpr char kRealtimePos[] = "MESSAGE REALTIME POS %d,%d";
inline constexpr char kRealtimeDone[] = "MESSAGE REALTIME DONE %d,%d";
inline constexpr char kRealtimeLose[] = "MESSAGE REALTIME LOSE %d,%d";
inline constexpr char kRealtimeBest[] = "MESSAGE REALTIME BEST %d,%d";
inline constexpr char kRealtimeVal[] = "MESSAGE REALTIME VAL %d";
inline constexpr char kRealtimePvCell[] = " %d,%d";

// The analysis jobs. Balance: depth counted with the candidate's stones, the
// same less the smallest remaining depth reached, the offset negated, the
// candidate's distance from it, ms, millions of nodes, the stones.
inline constexpr char kBalanceOneDepth[] = "MESSAGE DETAIL DEPTH:%d-%d |VAL%+d|:%d TIME:%ldms NODE:%dm [%c,%d]";
inline constexpr char kBalanceOneFinal[] =
    "MESSAGE DETAIL (BALANCE) DEPTH:%d-%d |VAL%+d|:%d TIME:%ldms NODE:%dm [%c,%d]";
inline constexpr char kBalanceTwoDepth[] =
    "MESSAGE DETAIL DEPTH:%d-%d |VAL%+d|:%d TIME:%ldms NODE:%dm [%c,%d][%c,%d]";
inline constexpr char kBalanceTwoFinal[] =
    "MESSAGE DETAIL (BALANCE) DEPTH:%d-%d |VAL%+d|:%d TIME:%ldms NODE:%dm [%c,%d][%c,%d]";
// N-best and search-defend, one line per move: rank, depth, value, the move,
// ms and millions of nodes when its search ended.
inline constexpr char kNBestLine[] = "MESSAGE DETAIL (NBEST) RANK:%d DEPTH:%d VAL:%d [%c,%d] TIME:%ldms NODE:%dm";
// Search-defend names its variant after the word: nothing for the
// threat-based one, the solver level for the ones built on the threat solvers.
inline constexpr char kDefendLine[] =
    "MESSAGE DETAIL (SearchDefend%s) RANK:%d DEPTH:%d VAL:%d [%c,%d] TIME:%ldms NODE:%dm";
// No move holds: the one that loses last, with the plies from it to the opponent's five.
inline constexpr char kDefendNone[] =
    "MESSAGE DETAIL (SearchDefend%s) NONE DEPTH:%d LOSS:%d [%c,%d] TIME:%ldms NODE:%dm";
inline constexpr const char* kDefendVariants[] = {"", "1", "2"};
inline constexpr char kErrorNBestCount[] = "ERROR zvnbest needs a count of at least 1";

// The opening rules. Swap2: the three stones of the opening, then the
// answers of the second player after three and after five stones.
inline constexpr char kSwap2Opening[] = "MESSAGE SWAP2 MOVE%d %d %d";
inline constexpr char kSwap2First[] = "MESSAGE SWAP2 SWAP1 %s";
inline constexpr char kSwap2Fourth[] = "MESSAGE SWAP2 MOVE4 %d %d";
inline constexpr char kSwap2Fifth[] = "MESSAGE SWAP2 MOVE5 %d %d";
inline constexpr char kSwap2Second[] = "MESSAGE SWAP2 SWAP2 %s";
inline constexpr char kYes[] = "YES";
inline constexpr char kNo[] = "NO";
// Soosorv: the fixed first three stones, the check of an opening and the swap answer.
inline constexpr char kSoosorvOpening[] = "MESSAGE SOOSORV MOVE%d %d %d";
inline constexpr char kSoosorvFirst[] = "MESSAGE SOOSORV SWAP1 %s";
inline constexpr char kIllegalOpening[] = "MESSAGE Illegal opening!";
// The fourth stone from the database with its count of fifth-move offers,
// or word that the database has none; whether to swap for that many offers.
inline constexpr char kSoosorvFourth[] = "MESSAGE SOOSORV MOVE4 %d %d %d";
inline constexpr char kSoosorvNoFourth[] = "MESSAGE SOOSORV no fourth move in the database";
inline constexpr char kSoosorvSecond[] = "MESSAGE SOOSORV SWAP2 %s";
inline constexpr char kErrorOfferCount[] = "ERROR zvsoosorvstep4 needs the number of fifth moves offered";
// The fifth moves offered, between a head and an end line; the one chosen.
inline constexpr char kSoosorvOffersBegin[] = "MESSAGE SOOSORV MOVE5 REFRESH";
inline constexpr char kSoosorvOffer[] = "MESSAGE SOOSORV MOVE5 %d %d";
inline constexpr char kSoosorvOffersEnd[] = "MESSAGE SOOSORV MOVE5 DONE";
inline constexpr char kSoosorvChoice[] = "MESSAGE SOOSORV MOVE5C %d %d";
// A count or candidate list that breaks the rule; stones that are no game;
// fewer distinct usable cells than offers asked for.
inline constexpr char kIllegalFifthSet[] = "MESSAGE Illegal 5-move set";
inline constexpr char kIllegalSequence[] = "MESSAGE Illegal move sequence!";
inline constexpr char kUnexpectedError[] = "MESSAGE Unexpected error!";

inline constexpr char kForbidHead[] = "FORBID ";
inline constexpr char kForbidCell[] = "%02d%02d";
inline constexpr char kForbidEnd[] = ".";
inline constexpr char kFeatureRow[] = "MESSAGE";
inline constexpr char kFeatureValue[] = " %d";
inline constexpr char kFeatureBlockEnd[] = "MESSAGE ";

}  // namespace zorva::reply
