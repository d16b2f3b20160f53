// Expression evaluation and function calls of the Interpreter.

#include <utility>

#include "config/interpreter.h"
#include "config/lexer.h"

namespace zorva::config {

std::optional<Value> Interpreter::eval(const Expr& e) {
  Enter enter(*this);
  if (!enter.ok()) return std::nullopt;
  switch (e.kind) {
    case ExprKind::Literal: return e.literal;
    case ExprKind::Variable: return evalVariable(e);
    case ExprKind::Element: return evalElement(e);
    case ExprKind::Call: return call(e, true);
    case ExprKind::Unary: return evalUnary(e);
    case ExprKind::Cast: {
      std::optional<Value> v = eval(*e.operands[0]);
      if (!v) return std::nullopt;
      return convert(e.castType, *v);
    }
    case ExprKind::Binary: return evalBinary(e);
    case ExprKind::Assign: return evalAssign(e);
  }
  return fail("Unexpected syntax error");
}

std::optional<Value> Interpreter::evalVariable(const Expr& e) {
  int index = env_.find(e.name);
  if (index < 0) return fail("Undefined variable ", e.name);
  const Variable& v = env_.at(index);
  if (v.isArray) return fail("Array ", e.name, " is used without an index");
  return v.scalar;
}

std::optional<std::pair<int, int32_t>> Interpreter::locateElement(const Expr& e) {
  int index = env_.find(e.name);
  if (index < 0) return fail("Undefined variable ", e.name);
  if (!env_.at(index).isArray) return fail("", e.name, " is not an array");
  std::optional<Value> position = eval(*e.operands[0]);
  if (!position) return std::nullopt;
  if (position->isFloat()) return fail("The index of ", e.name, " must be integer");
  // Re-read the variable: evaluating the index may have called functions,
  // which moves variables in memory but never out of scope.
  std::size_t size = env_.at(index).elements.size();
  if (position->i < 0 || static_cast<std::size_t>(position->i) >= size) {
    return failIndex(e.name, position->i, size);
  }
  return std::make_pair(index, position->i);
}

std::optional<Value> Interpreter::evalElement(const Expr& e) {
  std::optional<std::pair<int, int32_t>> where = locateElement(e);
  if (!where) return std::nullopt;
  return env_.at(where->first).elements[static_cast<std::size_t>(where->second)];
}

std::optional<Value> Interpreter::evalBinary(const Expr& e) {
  std::optional<Value> a = eval(*e.operands[0]);
  if (!a) return std::nullopt;
  // && and || evaluate their right operand only when it decides the result.
  if (e.op == kTokAndAnd || e.op == kTokOrOr) {
    bool left = isTrue(*a);
    if (left == (e.op == kTokOrOr)) return Value::ofInt(left ? 1 : 0);
    std::optional<Value> b = eval(*e.operands[1]);
    if (!b) return std::nullopt;
    return Value::ofInt(isTrue(*b) ? 1 : 0);
  }
  std::optional<Value> b = eval(*e.operands[1]);
  if (!b) return std::nullopt;
  return checked(applyBinary(e.op, *a, *b), e.op);
}

std::optional<Value> Interpreter::evalUnary(const Expr& e) {
  std::optional<Value> v = eval(*e.operands[0]);
  if (!v) return std::nullopt;
  return checked(applyUnary(e.op, *v), e.op);
}

// The target is resolved (and its index evaluated) before the value, as the
// reading order suggests; the result is the value stored, as in C.
std::optional<Value> Interpreter::evalAssign(const Expr& e) {
  const Expr& target = *e.operands[0];
  int index = -1;
  int32_t element = -1;
  if (target.kind == ExprKind::Element) {
    std::optional<std::pair<int, int32_t>> where = locateElement(target);
    if (!where) return std::nullopt;
    std::tie(index, element) = *where;
  } else {
    index = env_.find(target.name);
    if (index < 0) return fail("Undefined variable ", target.name);
    if (env_.at(index).isArray) return fail("Array ", target.name, " is used without an index");
  }
  std::optional<Value> value = eval(*e.operands[1]);
  if (!value) return std::nullopt;
  Variable& v = env_.at(index);
  value = convert(v.type, *value);
  if (!value) return std::nullopt;
  if (element >= 0) {
    v.elements[static_cast<std::size_t>(element)] = *value;
  } else {
    v.scalar = *value;
  }
  return value;
}

// Arguments are evaluated left to right in the caller's scope and converted to
// the parameter types; the function then runs in a frame of its own.
std::optional<Value> Interpreter::call(const Expr& e, bool valueNeeded) {
  Enter enter(*this);
  if (!enter.ok()) return std::nullopt;
  auto found = functions_.find(e.name);
  if (found == functions_.end()) return fail("Undefined function ", e.name);
  const Function& f = *found->second;
  if (e.operands.size() != f.params.size()) {
    return fail("Wrong number of arguments in the call of ", e.name);
  }
  if (valueNeeded && f.result == ValueType::Void) {
    return fail("Function ", e.name, " returns no value");
  }
  std::vector<Value> args;
  args.reserve(f.params.size());
  for (std::size_t i = 0; i < f.params.size(); ++i) {
    std::optional<Value> v = eval(*e.operands[i]);
    if (v) v = convert(f.params[i].type, *v);
    if (!v) return std::nullopt;
    args.push_back(*v);
  }
  env_.pushFrame();
  for (std::size_t i = 0; i < f.params.size(); ++i) env_.addScalar(f.params[i].name, args[i]);
  const SourcePos caller = where_;
  Flow flow = execAll(f.body);
  where_ = caller;
  env_.popFrame();
  if (flow == Flow::Error) return std::nullopt;
  if (f.result == ValueType::Void) return Value{};
  if (flow != Flow::Return) return fail("Function ", e.name, " ended without returning a value");
  return convert(f.result, returned_);
}

}  // namespace zorva::config
