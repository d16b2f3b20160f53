#pragma once
// Values of the configuration language and the operators on them.

#include <cstdint>
#include <string>

namespace zorva::config {

enum class ValueType : uint8_t { Int, Float, Void };

struct Value {
  ValueType type = ValueType::Int;  // Int or Float; Void never reaches a value
  int32_t i = 0;
  float f = 0.0f;

  static Value ofInt(int32_t v) { return Value{ValueType::Int, v, 0.0f}; }
  static Value ofFloat(float v) { return Value{ValueType::Float, 0, v}; }
  static Value zero(ValueType t) { return t == ValueType::Float ? ofFloat(0.0f) : ofInt(0); }
  bool isFloat() const { return type == ValueType::Float; }
};

// What an operation can report instead of a value.
enum class OpError : uint8_t {
  None,
  NeedsInteger,    // a float operand of % & | ^ << >> ! ~
  DivisionByZero,  // also for floats: the script almost surely has a fault
  ShiftRange,      // shift amount outside 0..31
  OutOfIntRange,   // float to int of a value outside the int range, or NaN
  Invalid,         // not an operator of this arity
};

struct OpResult {
  Value value;
  OpError error = OpError::None;
};

// The message for an error of the operator `op`.
std::string describe(OpError error, int32_t op);

// Non-zero test of conditions, && and ||; a float counts as true unless it is 0.
bool isTrue(Value v);

// Conversion as in a C assignment: float to int truncates toward zero.
OpResult convertTo(ValueType type, Value v);

// Unary -, +, !, ~ (op is the operator's token kind).
OpResult applyUnary(int32_t op, Value v);

// Every binary operator except && and ||, which the evaluator short-circuits.
// C's usual conversions: a float operand makes the operation float; comparisons
// give int 0 or 1. Integer +, -, *, unary - and INT_MIN / -1 wrap modulo 2^32,
// as two's complement hardware does, rather than being undefined.
OpResult applyBinary(int32_t op, Value a, Value b);

// The operator as written in the source, for messages.
std::string operatorSpelling(int32_t op);

}  // namespace zorva::config
