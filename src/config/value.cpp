#include "config/value.h"

#include "config/lexer.h"

namespace zorva::config {
namespace {

// Integer arithmetic goes through uint32_t, whose wrap-around is defined; the
// conversion back to int32_t is modular as well.
int32_t wrap(uint32_t v) { return static_cast<int32_t>(v); }
uint32_t bits(int32_t v) { return static_cast<uint32_t>(v); }

OpResult ofInt(int32_t v) { return OpResult{Value::ofInt(v)}; }
OpResult ofFloat(float v) { return OpResult{Value::ofFloat(v)}; }
OpResult failure(OpError e) { return OpResult{Value{}, e}; }

bool requiresIntegers(int32_t op) {
  return op == '%' || op == '&' || op == '|' || op == '^' || op == kTokShiftLeft ||
         op == kTokShiftRight;
}

OpResult compare(int32_t op, auto a, auto b) {
  switch (op) {
    case '<': return ofInt(a < b);
    case '>': return ofInt(a > b);
    case kTokLessEqual: return ofInt(a <= b);
    case kTokGreaterEqual: return ofInt(a >= b);
    case kTokEqual: return ofInt(a == b);
    case kTokNotEqual: return ofInt(a != b);
    default: return failure(OpError::Invalid);
  }
}

OpResult floatBinary(int32_t op, float a, float b) {
  switch (op) {
    case '+': return ofFloat(a + b);
    case '-': return ofFloat(a - b);
    case '*': return ofFloat(a * b);
    case '/': return b == 0.0f ? failure(OpError::DivisionByZero) : ofFloat(a / b);
    default: return compare(op, a, b);
  }
}

OpResult shift(int32_t op, int32_t a, int32_t b) {
  if (b < 0 || b > 31) return failure(OpError::ShiftRange);
  if (op == kTokShiftLeft) return ofInt(wrap(bits(a) << b));
  return ofInt(a >> b);  // arithmetic shift, defined since C++20
}

OpResult intBinary(int32_t op, int32_t a, int32_t b) {
  switch (op) {
    case '+': return ofInt(wrap(bits(a) + bits(b)));
    case '-': return ofInt(wrap(bits(a) - bits(b)));
    case '*': return ofInt(wrap(bits(a) * bits(b)));
    case '/':
    case '%':
      if (b == 0) return failure(OpError::DivisionByZero);
      // INT_MIN / -1 overflows in hardware; the wrapped quotient is INT_MIN.
      if (b == -1) return ofInt(op == '/' ? wrap(0u - bits(a)) : 0);
      return ofInt(op == '/' ? a / b : a % b);
    case '&': return ofInt(a & b);
    case '|': return ofInt(a | b);
    case '^': return ofInt(a ^ b);
    case kTokShiftLeft:
    case kTokShiftRight: return shift(op, a, b);
    default: return compare(op, a, b);
  }
}

float asFloat(Value v) { return v.isFloat() ? v.f : static_cast<float>(v.i); }

}  // namespace

std::string describe(OpError error, int32_t op) {
  switch (error) {
    case OpError::None: return "";
    case OpError::NeedsInteger: return "The operands of " + operatorSpelling(op) + " must be integer";
    case OpError::DivisionByZero: return "Division by zero";
    case OpError::ShiftRange: return "The shift amount must be between 0 and 31";
    case OpError::OutOfIntRange: return "Float value does not fit in an int";
    case OpError::Invalid: break;
  }
  return "Unexpected syntax error";
}

bool isTrue(Value v) { return v.isFloat() ? v.f != 0.0f : v.i != 0; }

OpResult convertTo(ValueType type, Value v) {
  if (type == ValueType::Float) return ofFloat(asFloat(v));
  if (!v.isFloat()) return OpResult{v};
  // 2^31 is exact in float and no float lies strictly between -2^31 - 1 and
  // -2^31, so this is the exact int range; the negated test also catches NaN.
  constexpr float kLimit = 2147483648.0f;
  if (!(v.f >= -kLimit && v.f < kLimit)) return failure(OpError::OutOfIntRange);
  return ofInt(static_cast<int32_t>(v.f));
}

OpResult applyUnary(int32_t op, Value v) {
  if ((op == '!' || op == '~') && v.isFloat()) return failure(OpError::NeedsInteger);
  switch (op) {
    case '+': return OpResult{v};
    case '-': return v.isFloat() ? ofFloat(-v.f) : ofInt(wrap(0u - bits(v.i)));
    case '!': return ofInt(v.i == 0);
    case '~': return ofInt(~v.i);
    default: return failure(OpError::Invalid);
  }
}

OpResult applyBinary(int32_t op, Value a, Value b) {
  if (requiresIntegers(op) && (a.isFloat() || b.isFloat())) return failure(OpError::NeedsInteger);
  if (a.isFloat() || b.isFloat()) return floatBinary(op, asFloat(a), asFloat(b));
  return intBinary(op, a.i, b.i);
}

std::string operatorSpelling(int32_t op) {
  switch (op) {
    case kTokGreaterEqual: return ">=";
    case kTokLessEqual: return "<=";
    case kTokEqual: return "==";
    case kTokNotEqual: return "!=";
    case kTokShiftLeft: return "<<";
    case kTokShiftRight: return ">>";
    case kTokAndAnd: return "&&";
    case kTokOrOr: return "||";
    default: break;
  }
  if (op > 0 && op < 128) return std::string(1, static_cast<char>(op));
  return "?";
}

}  // namespace zorva::config
