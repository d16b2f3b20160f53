#include "protocol/opening_commands.h"

#include <cstdlib>

#include "protocol/cell_body.h"
#include "protocol/messages.h"
#include "protocol/output.h"

namespace zorva {

namespace {

constexpr int kGoOn = 0;
constexpr int kOpeningStones = 3;

struct Cell {
  int x, y;
};
using Opening = Cell[kOpeningStones];

// Printed as they stand, whatever the board: the manager places them.
constexpr Opening kSwap2Openings[] = {
    {{3, 3}, {5, 2}, {7, 2}},
    {{3, 2}, {5, 5}, {5, 4}},
    {{5, 5}, {8, 7}, {9, 8}},
    {{3, 7}, {6, 7}, {8, 7}},
};
constexpr int kSwap2OpeningCount = sizeof(kSwap2Openings) / sizeof(kSwap2Openings[0]);

// Soosorv's first stone is the centre of the 15 x 15 board, the second
// within one of it, the third within two.
constexpr int kCentre = 7;
constexpr Opening kSoosorvOpening = {{kCentre, kCentre}, {6, 7}, {5, 7}};
constexpr int kSecondReach = 1;
constexpr int kThirdReach = 2;

void printOpening(const char* format, const Opening& stones) {
  for (int i = 0; i < kOpeningStones; ++i) sendLine(format, i + 1, stones[i].x, stones[i].y);
}

bool within(const Cell& c, const Cell& centre, int reach) {
  return std::abs(c.x - centre.x) <= reach && std::abs(c.y - centre.y) <= reach;
}

int orthogonalDistance(const Cell& a, const Cell& b) { return std::abs(a.x - b.x) + std::abs(a.y - b.y); }

bool legalSoosorv(const Cell* s) {
  const Cell centre{kCentre, kCentre};
  return s[0].x == kCentre && s[0].y == kCentre && within(s[1], centre, kSecondReach) &&
         within(s[2], centre, kThirdReach);
}

// The openings the side to move takes over: a second stone beside the
// centre, the third continuing that line or closing a tight triangle.
bool soosorvSwaps(const Cell* s) {
  const Cell centre{kCentre, kCentre};
  if (orthogonalDistance(s[1], centre) != 1) return false;
  const bool straight = s[2].x == 2 * s[1].x - kCentre && s[2].y == 2 * s[1].y - kCentre;
  const bool triangle = within(s[2], centre, 1) && orthogonalDistance(s[2], s[1]) == 1;
  return straight || triangle;
}

}  // namespace

int cmdSwap2Step1(const char*) {
  printOpening(reply::kSwap2Opening, kSwap2Openings[std::rand() % kSwap2OpeningCount]);
  return kGoOn;
}

int cmdSoosorvStep1(const char*) {
  printOpening(reply::kSoosorvOpening, kSoosorvOpening);
  return kGoOn;
}

int cmdSoosorvStep2(const char*) {
  const CellBody body = readCellBody();
  Cell stones[kOpeningStones];
  const bool complete = !body.rejected && body.cells.size() == size_t(kOpeningStones);
  for (int i = 0; complete && i < kOpeningStones; ++i) stones[i] = {rowOf(body.cells[i]), colOf(body.cells[i])};
  if (!complete || !legalSoosorv(stones)) {
    sendLine(reply::kIllegalOpening);
    return kGoOn;
  }
  sendLine(reply::kSoosorvFirst, soosorvSwaps(stones) ? reply::kYes : reply::kNo);
  return kGoOn;
}

}  // namespace zorva
