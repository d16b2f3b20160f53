#include "config/interpreter.h"

#include <utility>

#include "config/lexer.h"


namespace zorva::config {

Interpreter::Enter::Enter(Interpreter& in) : in_(in), ok_(false) {
  ++in_.depth_;
  if (!in_.error_.empty()) return;
  if (++in_.steps_ > in_.limits_.maxSteps) {
    in_.failSteps();
  } else if (in_.depth_ > in_.limits_.maxDepth) {
    in_.fail("Recursion is too deep");
  } else {
    ok_ = true;
  }
}

Interpreter::Interpreter(const Program& program, const Limits& limits)
    : program_(program), limits_(limits), env_(limits.maxArrayCells) {
  for (const Function& f : program_.functions) functions_.emplace(f.name, &f);
}

void Interpreter::bind(std::string_view name, int32_t value) {
  env_.addScalar(name, Value::ofInt(value), true);
}

bool Interpreter::run() {
  Flow flow = execAll(program_.statements);
  return flow != Flow::Error && error_.empty();
}

std::optional<int32_t> Interpreter::global(std::string_view name) const {
  int index = env_.find(name);
  if (index < 0) return std::nullopt;
  const Variable& v = env_.at(index);
  if (v.isArray || v.type != ValueType::Int) return std::nullopt;
  return v.scalar.i;
}

std::nullopt_t Interpreter::fail(std::string_view a, std::string_view b, std::string_view c) {
  if (error_.empty()) {
    error_.append(a);
    error_.append(b);
    error_.append(c);
    error_.append(describePos(where_));
  }
  return std::nullopt;
}

bool Interpreter::failed(std::string_view a, std::string_view b, std::string_view c) {
  fail(a, b, c);
  return false;
}

std::nullopt_t Interpreter::failSteps() {
  return fail("Script runs too long: more than ", std::to_string(limits_.maxSteps), " steps");
}

std::nullopt_t Interpreter::failIndex(const std::string& name, int32_t index, std::size_t size) {
  return fail("Index " + std::to_string(index) + " is out of range for ", name,
              "[" + std::to_string(size) + "]");
}

std::nullopt_t Interpreter::failOp(OpError error, int32_t op) { return fail(describe(error, op)); }

std::optional<Value> Interpreter::checked(OpResult r, int32_t op) {
  if (r.error != OpError::None) return failOp(r.error, op);
  return r.value;
}

std::optional<Value> Interpreter::convert(ValueType type, Value v) {
  return checked(convertTo(type, v), 0);
}

// ---- statements ----------------------------------------------------------

Interpreter::Flow Interpreter::exec(const Stmt& s) {
  Enter enter(*this);
  if (!enter.ok()) return Flow::Error;
  where_ = s.pos;
  switch (s.kind) {
    case StmtKind::Empty: return Flow::Normal;
    case StmtKind::Expression: {
      // A call whose value is dropped may be to a void function.
      bool ok = s.expr->kind == ExprKind::Call ? call(*s.expr, false).has_value()
                                                : eval(*s.expr).has_value();
      return ok ? Flow::Normal : Flow::Error;
    }
    case StmtKind::Declaration:
      for (const Declarator& d : s.declarators) {
        if (!declare(s.type, d)) return Flow::Error;
      }
      return Flow::Normal;
    case StmtKind::Block: return execBlock(s);
    case StmtKind::If: {
      std::optional<Value> c = eval(*s.expr);
      if (!c) return Flow::Error;
      if (isTrue(*c)) return exec(*s.children[0]);
      return s.children.size() > 1 ? exec(*s.children[1]) : Flow::Normal;
    }
    case StmtKind::While: return execWhile(s);
    case StmtKind::Break: return Flow::Break;
    case StmtKind::Continue: return Flow::Continue;
    case StmtKind::Return:
      if (s.expr) {
        std::optional<Value> v = eval(*s.expr);
        if (!v) return Flow::Error;
        returned_ = *v;
      }
      return Flow::Return;
  }
  fail("Unexpected syntax error");
  return Flow::Error;
}

Interpreter::Flow Interpreter::execAll(const std::vector<StmtPtr>& statements) {
  for (const StmtPtr& s : statements) {
    Flow flow = exec(*s);
    if (flow != Flow::Normal) return flow;
  }
  return Flow::Normal;
}

Interpreter::Flow Interpreter::execBlock(const Stmt& s) {
  env_.pushScope();
  Flow flow = execAll(s.children);
  env_.popScope();
  return flow;
}

Interpreter::Flow Interpreter::execWhile(const Stmt& s) {
  for (;;) {
    std::optional<Value> c = eval(*s.expr);
    if (!c) return Flow::Error;
    if (!isTrue(*c)) return Flow::Normal;
    Flow flow = exec(*s.children[0]);
    if (flow == Flow::Break) return Flow::Normal;
    if (flow == Flow::Error || flow == Flow::Return) return flow;
  }
}

// ---- declarations ----------------------------------------------------------

bool Interpreter::declare(ValueType type, const Declarator& d) {
  int existing = env_.findInScope(d.name);
  if (existing >= 0) {
    // The engine variables act as if declared "int name;" ahead of the script,
    // so the script may declare them again at top level, as C allows for a
    // variable declared twice at file scope; anything else is a second variable.
    Variable& v = env_.at(existing);
    bool sameEngineVariable = v.bound && env_.atTopLevel() && type == ValueType::Int && !d.isArray;
    if (!sameEngineVariable) return failed("Redefinition of ", d.name);
    if (!d.init) return true;
    std::optional<Value> value = eval(*d.init);
    if (value) value = convert(ValueType::Int, *value);
    if (!value) return false;
    env_.at(existing).scalar = *value;
    return true;
  }
  return d.isArray ? declareArray(type, d) : declareScalar(type, d);
}

// Variables without an initialiser start at zero, wherever they are declared.
bool Interpreter::declareScalar(ValueType type, const Declarator& d) {
  Value value = Value::zero(type);
  if (d.init) {
    std::optional<Value> v = eval(*d.init);
    if (v) v = convert(type, *v);
    if (!v) return false;
    value = *v;
  }
  env_.addScalar(d.name, value);
  return true;
}

std::optional<int32_t> Interpreter::arraySize(const Declarator& d) {
  if (!d.size) return static_cast<int32_t>(d.initList.size());
  std::optional<Value> size = eval(*d.size);
  if (!size) return std::nullopt;
  if (size->isFloat()) return fail("The size of array ", d.name, " must be integer");
  return size->i;
}

// A size of its own or the count of the list; a shorter list leaves the rest
// zero, a longer one is malformed.
bool Interpreter::declareArray(ValueType type, const Declarator& d) {
  std::optional<int32_t> size = arraySize(d);
  if (!size) return false;
  if (*size < 1) return failed("The size of array ", d.name, " must be positive");
  if (!env_.canHold(*size)) return failed("Array ", d.name, " is too large");
  if (d.initList.size() > static_cast<std::size_t>(*size)) {
    return failed("Syntax of array initialization is incorrect");
  }
  steps_ += *size;  // the cells are work too: a loop of big arrays must end
  if (steps_ > limits_.maxSteps) {
    failSteps();
    return false;
  }
  std::vector<Value> cells(static_cast<std::size_t>(*size), Value::zero(type));
  for (std::size_t i = 0; i < d.initList.size(); ++i) {
    std::optional<Value> v = eval(*d.initList[i]);
    if (v) v = convert(type, *v);
    if (!v) return false;
    cells[i] = *v;
  }
  if (!env_.addArray(d.name, type, std::move(cells))) {
    return failed("Array ", d.name, " is too large");
  }
  return true;
}

}  // namespace zorva::config
