#pragma once
// Program tree of the configuration script, built by the parser and walked by
// the interpreter. Nodes own their children; the parser bounds the height of
// every tree so that walking and destroying it cannot exhaust the stack.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "config/value.h"

namespace zorva::config {

enum class ExprKind : uint8_t {
  Literal,   // literal
  Variable,  // name
  Element,   // name[operands[0]]
  Call,      // name(operands...)
  Unary,     // op operands[0]
  Binary,    // operands[0] op operands[1], including && and ||
  Cast,      // (castType) operands[0]
  Assign,    // operands[0] = operands[1]; operands[0] is a Variable or an Element
};

struct Expr;
using ExprPtr = std::unique_ptr<Expr>;

struct Expr {
  ExprKind kind = ExprKind::Literal;
  int32_t op = 0;  // operator token kind
  Value literal;
  ValueType castType = ValueType::Int;
  std::string name;
  std::vector<ExprPtr> operands;
  int height = 1;  // 1 + the largest height among the operands
};

// Where a statement begins in the script, for error messages; line and
// column count from 1, 0 means unknown.
struct SourcePos {
  int line = 0;
  int column = 0;
};

// " at line L, column C", or nothing when the place is unknown.
std::string describePos(SourcePos pos);

enum class StmtKind : uint8_t {
  Empty,
  Expression,   // expr
  Declaration,  // type declarators
  Block,        // children
  If,           // if (expr) children[0] [else children[1]]
  While,        // while (expr) children[0]
  Break,
  Continue,
  Return,       // return [expr]
};

struct Declarator {
  std::string name;
  bool isArray = false;
  ExprPtr size;                    // null for "name[]": the list gives the size
  ExprPtr init;                    // scalar initialiser, may be null
  bool hasList = false;            // array initialiser "{ ... }" present
  std::vector<ExprPtr> initList;
};

struct Stmt;
using StmtPtr = std::unique_ptr<Stmt>;

struct Stmt {
  StmtKind kind = StmtKind::Empty;
  ValueType type = ValueType::Int;  // Declaration
  std::vector<Declarator> declarators;
  ExprPtr expr;
  std::vector<StmtPtr> children;
  SourcePos pos;
};

struct Param {
  std::string name;
  ValueType type = ValueType::Int;
};

struct Function {
  std::string name;
  ValueType result = ValueType::Void;
  std::vector<Param> params;
  std::vector<StmtPtr> body;  // parameters and body share the outermost scope
};

// The top-level statements run in order as the body of an implicit void
// function named kTopLevelName; functions are known before anything runs.
struct Program {
  std::vector<StmtPtr> statements;
  std::vector<Function> functions;
};

inline constexpr const char* kTopLevelName = "config_core";

}  // namespace zorva::config
