#include "config/parser.h"

#include <algorithm>
#include <utility>

namespace zorva::config {
namespace {

constexpr const char* kSyntaxError = "Unexpected syntax error";
constexpr const char* kArrayInitError = "Syntax of array initialization is incorrect";
constexpr const char* kReturnError = "Type of return value must match the definition";

// Binding strength of the binary operators; 0 means "not a binary operator".
int precedence(int32_t kind) {
  switch (kind) {
    case kTokOrOr: return 1;
    case kTokAndAnd: return 2;
    case '|': return 3;
    case '^': return 4;
    case '&': return 5;
    case kTokEqual: case kTokNotEqual: return 6;
    case '<': case '>': case kTokLessEqual: case kTokGreaterEqual: return 7;
    case kTokShiftLeft: case kTokShiftRight: return 8;
    case '+': case '-': return 9;
    case '*': case '/': case '%': return 10;
    default: return 0;
  }
}

bool isScalarType(int32_t kind) { return kind == kTokInt || kind == kTokFloat; }

ValueType typeOf(int32_t kind) {
  if (kind == kTokFloat) return ValueType::Float;
  if (kind == kTokVoid) return ValueType::Void;
  return ValueType::Int;
}

bool canStartExpression(int32_t kind) {
  return kind == kTokIdentifier || kind == kTokIntLiteral || kind == kTokFloatLiteral ||
         kind == '(' || kind == '-' || kind == '+' || kind == '!' || kind == '~';
}

class Parser {
 public:
  explicit Parser(const std::vector<Token>& tokens) : tokens_(tokens) {}

  ParseResult run() {
    ParseResult result;
    while (ok() && peek() != kTokEnd) {
      if (startsFunction()) {
        parseFunction(result.program);
      } else if (StmtPtr s = parseItem()) {
        result.program.statements.push_back(std::move(s));
      }
    }
    if (!ok()) return ParseResult{Program{}, error_};
    return result;
  }

 private:
  // Counts nesting while it lives; the first level too deep fails the parse.
  class Nest {
   public:
    explicit Nest(Parser& p) : p_(p) {
      if (++p_.depth_ > kMaxNesting) p_.fail("Script is nested too deeply");
    }
    ~Nest() { --p_.depth_; }
    Nest(const Nest&) = delete;
    Nest& operator=(const Nest&) = delete;

   private:
    Parser& p_;
  };

  bool ok() const { return error_.empty(); }
  int32_t peek(std::size_t ahead = 0) const {
    return tokens_[std::min(pos_ + ahead, tokens_.size() - 1)].kind;
  }
  const Token& take() {
    const Token& t = tokens_[pos_];
    if (pos_ + 1 < tokens_.size()) ++pos_;
    return t;
  }
  bool accept(int32_t kind) {
    if (peek() != kind) return false;
    take();
    return true;
  }
  bool expect(int32_t kind, const char* message = kSyntaxError) {
    if (accept(kind)) return true;
    fail(message);
    return false;
  }
  // The message names the token the parser stopped at.
  std::nullptr_t fail(const std::string& message) {
    if (error_.empty()) error_ = message + describePos(tokens_[pos_].pos);
    return nullptr;
  }
  bool failed(const std::string& message) {
    fail(message);
    return false;
  }

  bool startsFunction() const {
    return (isScalarType(peek()) || peek() == kTokVoid) && peek(1) == kTokIdentifier &&
           peek(2) == '(';
  }

  // ---- functions -------------------------------------------------------

  void parseFunction(Program& program) {
    Function f;
    f.result = typeOf(take().kind);
    f.name = take().text;
    take();  // "("
    if (!parseParams(f.params)) return;
    if (accept(';')) return;  // a prototype
    if (f.name == kTopLevelName ||
        std::any_of(program.functions.begin(), program.functions.end(),
                    [&](const Function& g) { return g.name == f.name; })) {
      fail("Redefinition of " + f.name);
      return;
    }
    if (peek() != '{') {
      fail(kSyntaxError);
      return;
    }
    result_ = f.result;
    StmtPtr body = parseBlock();
    result_ = ValueType::Void;
    if (!body) return;
    f.body = std::move(body->children);
    program.functions.push_back(std::move(f));
  }

  bool parseParams(std::vector<Param>& params) {
    if (accept(')')) return true;
    if (peek() == kTokVoid && peek(1) == ')') {
      take();
      take();
      return true;
    }
    do {
      if (!isScalarType(peek()) || peek(1) != kTokIdentifier) return failed(kSyntaxError);
      Param p;
      p.type = typeOf(take().kind);
      p.name = take().text;
      for (const Param& q : params) {
        if (q.name == p.name) return failed("Redefinition of " + p.name);
      }
      params.push_back(std::move(p));
    } while (accept(','));
    return expect(')');
  }

  // ---- statements ------------------------------------------------------

  // A declaration or a statement: what a block may hold.
  StmtPtr parseItem() {
    if (isScalarType(peek()) || peek() == kTokVoid) return placed(tokens_[pos_].pos, parseDeclaration());
    return parseStatement();
  }

  static StmtPtr placed(SourcePos pos, StmtPtr s) {
    if (s) s->pos = pos;
    return s;
  }

  StmtPtr parseDeclaration() {
    if (peek() == kTokVoid) return fail(kSyntaxError);
    auto s = std::make_unique<Stmt>();
    s->kind = StmtKind::Declaration;
    s->type = typeOf(take().kind);
    do {
      if (peek() != kTokIdentifier) return fail(kSyntaxError);
      Declarator d;
      d.name = take().text;
      if (!parseDeclarator(d)) return nullptr;
      s->declarators.push_back(std::move(d));
    } while (accept(','));
    if (!expect(';')) return nullptr;
    return s;
  }

  bool parseDeclarator(Declarator& d) {
    if (accept('[')) {
      d.isArray = true;
      if (peek() != ']' && !(d.size = parseExpr())) return false;
      if (!expect(']')) return false;
    }
    if (!accept('=')) {
      if (d.isArray && !d.size) return failed(kArrayInitError);
      return true;
    }
    if (!d.isArray) {
      if (peek() == '{') return failed(kArrayInitError);
      d.init = parseAssign();
      return d.init != nullptr;
    }
    return parseInitList(d);
  }

  bool parseInitList(Declarator& d) {
    if (!expect('{', kArrayInitError)) return false;
    d.hasList = true;
    while (!accept('}')) {
      if (!canStartExpression(peek())) return failed(kArrayInitError);
      ExprPtr e = parseAssign();
      if (!e) return false;
      d.initList.push_back(std::move(e));
      if (accept(',')) continue;
      if (peek() != '}') return failed(kArrayInitError);
    }
    return true;
  }

  StmtPtr parseStatement() {
    Nest nest(*this);
    if (!ok()) return nullptr;
    const SourcePos at = tokens_[pos_].pos;
    switch (peek()) {
      case '{': return placed(at, parseBlock());
      case kTokIf: return placed(at, parseIf());
      case kTokWhile: return placed(at, parseWhile());
      case kTokBreak:
      case kTokContinue: return placed(at, parseJump());
      case kTokReturn: return placed(at, parseReturn());
      default: break;
    }
    auto s = std::make_unique<Stmt>();
    s->pos = at;
    if (accept(';')) return s;
    s->kind = StmtKind::Expression;
    if (!(s->expr = parseExpr()) || !expect(';')) return nullptr;
    return s;
  }

  StmtPtr parseBlock() {
    take();  // "{"
    auto s = std::make_unique<Stmt>();
    s->kind = StmtKind::Block;
    while (!accept('}')) {
      if (peek() == kTokEnd) return fail(kSyntaxError);
      StmtPtr item = parseItem();
      if (!item) return nullptr;
      s->children.push_back(std::move(item));
    }
    return s;
  }

  // "(" expr ")" statement, shared by if and while.
  StmtPtr parseGuarded(StmtKind kind) {
    take();
    auto s = std::make_unique<Stmt>();
    s->kind = kind;
    if (!expect('(') || !(s->expr = parseExpr()) || !expect(')')) return nullptr;
    StmtPtr body = parseStatement();
    if (!body) return nullptr;
    s->children.push_back(std::move(body));
    return s;
  }

  StmtPtr parseIf() {
    StmtPtr s = parseGuarded(StmtKind::If);
    if (s && accept(kTokElse)) {
      StmtPtr otherwise = parseStatement();
      if (!otherwise) return nullptr;
      s->children.push_back(std::move(otherwise));
    }
    return s;
  }

  StmtPtr parseWhile() {
    ++loops_;
    StmtPtr s = parseGuarded(StmtKind::While);
    --loops_;
    return s;
  }

  StmtPtr parseJump() {
    bool isBreak = take().kind == kTokBreak;
    if (loops_ == 0) {
      return fail(isBreak ? "break outside of a loop" : "continue outside of a loop");
    }
    auto s = std::make_unique<Stmt>();
    s->kind = isBreak ? StmtKind::Break : StmtKind::Continue;
    if (!expect(';')) return nullptr;
    return s;
  }

  // A value must be returned exactly when the function's result is not void;
  // its type is then converted to the result type as C does. The top level is
  // a void unit, so a bare "return;" there ends the script early.
  StmtPtr parseReturn() {
    take();
    auto s = std::make_unique<Stmt>();
    s->kind = StmtKind::Return;
    bool hasValue = peek() != ';';
    if (hasValue != (result_ != ValueType::Void)) return fail(kReturnError);
    if (hasValue && !(s->expr = parseExpr())) return nullptr;
    if (!expect(';')) return nullptr;
    return s;
  }

  // ---- expressions -----------------------------------------------------

  ExprPtr node(ExprKind kind, std::vector<ExprPtr> operands = {}) {
    auto e = std::make_unique<Expr>();
    e->kind = kind;
    for (const ExprPtr& o : operands) e->height = std::max(e->height, o->height + 1);
    e->operands = std::move(operands);
    if (e->height > kMaxNesting) return fail("Script is nested too deeply");
    return e;
  }

  ExprPtr parseExpr() { return parseAssign(); }

  ExprPtr parseAssign() {
    Nest nest(*this);
    if (!ok()) return nullptr;
    ExprPtr target = parseBinary(1);
    if (!target || peek() != '=') return target;
    if (target->kind != ExprKind::Variable && target->kind != ExprKind::Element) {
      return fail("The left side of = must be a variable");
    }
    take();
    ExprPtr value = parseAssign();
    if (!value) return nullptr;
    std::vector<ExprPtr> operands;
    operands.push_back(std::move(target));
    operands.push_back(std::move(value));
    return node(ExprKind::Assign, std::move(operands));
  }

  // Precedence climbing; every level is left-associative.
  ExprPtr parseBinary(int minPrecedence) {
    ExprPtr lhs = parseUnary();
    while (lhs) {
      int p = precedence(peek());
      if (p == 0 || p < minPrecedence) break;
      int32_t op = take().kind;
      ExprPtr rhs = parseBinary(p + 1);
      if (!rhs) return nullptr;
      std::vector<ExprPtr> operands;
      operands.push_back(std::move(lhs));
      operands.push_back(std::move(rhs));
      lhs = node(ExprKind::Binary, std::move(operands));
      if (lhs) lhs->op = op;
    }
    return lhs;
  }

  ExprPtr parseUnary() {
    Nest nest(*this);
    if (!ok()) return nullptr;
    int32_t k = peek();
    if (k == '-' || k == '+' || k == '!' || k == '~') {
      take();
      return unaryNode(ExprKind::Unary, k, ValueType::Int);
    }
    if (k == '(' && isScalarType(peek(1)) && peek(2) == ')') {
      take();
      ValueType type = typeOf(take().kind);
      take();
      return unaryNode(ExprKind::Cast, 0, type);
    }
    return parsePrimary();
  }

  ExprPtr unaryNode(ExprKind kind, int32_t op, ValueType castType) {
    ExprPtr operand = parseUnary();
    if (!operand) return nullptr;
    std::vector<ExprPtr> operands;
    operands.push_back(std::move(operand));
    ExprPtr e = node(kind, std::move(operands));
    if (e) {
      e->op = op;
      e->castType = castType;
    }
    return e;
  }

  ExprPtr parsePrimary() {
    if (peek() != kTokIdentifier && peek() != kTokIntLiteral && peek() != kTokFloatLiteral && peek() != '(')
      return fail(kSyntaxError);
    const Token& t = take();
    if (t.kind == kTokIntLiteral || t.kind == kTokFloatLiteral) {
      ExprPtr e = node(ExprKind::Literal);
      e->literal = t.kind == kTokIntLiteral ? Value::ofInt(t.intValue) : Value::ofFloat(t.floatValue);
      return e;
    }
    if (t.kind == '(') {
      ExprPtr e = parseExpr();
      if (!e || !expect(')')) return nullptr;
      return e;
    }
    if (accept('[')) return parseElement(t.text);
    if (accept('(')) return parseCall(t.text);
    ExprPtr e = node(ExprKind::Variable);
    e->name = t.text;
    return e;
  }

  ExprPtr parseElement(const std::string& name) {
    ExprPtr index = parseExpr();
    if (!index || !expect(']')) return nullptr;
    std::vector<ExprPtr> operands;
    operands.push_back(std::move(index));
    ExprPtr e = node(ExprKind::Element, std::move(operands));
    if (e) e->name = name;
    return e;
  }

  ExprPtr parseCall(const std::string& name) {
    std::vector<ExprPtr> args;
    if (!accept(')')) {
      do {
        ExprPtr a = parseAssign();
        if (!a) return nullptr;
        args.push_back(std::move(a));
      } while (accept(','));
      if (!expect(')')) return nullptr;
    }
    ExprPtr e = node(ExprKind::Call, std::move(args));
    if (e) e->name = name;
    return e;
  }

  const std::vector<Token>& tokens_;
  std::size_t pos_ = 0;
  std::string error_;
  int depth_ = 0;
  int loops_ = 0;
  ValueType result_ = ValueType::Void;  // of the function being parsed; Void at top level
};

}  // namespace

ParseResult parse(const std::vector<Token>& tokens) {
  if (tokens.empty() || tokens.back().kind != kTokEnd) {
    return ParseResult{Program{}, "Unexpected syntax error"};
  }
  return Parser(tokens).run();
}

}  // namespace zorva::config
