#pragma once
// Variables of a running script: one stack of frames (function activations,
// frame 0 being the top-level unit), each holding nested block scopes.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "config/value.h"

namespace zorva::config {

struct Variable {
  std::string name;
  ValueType type = ValueType::Int;  // of the elements, for an array
  bool isArray = false;
  bool bound = false;   // an engine variable
  int scope = 0;        // block depth inside its frame; 0 is the frame's outermost scope
  Value scalar;
  std::vector<Value> elements;
};

class Environment {
 public:
  explicit Environment(int64_t maxArrayCells) : cellBudget_(maxArrayCells) {}

  void pushScope() { ++frames_.back().scope; }
  void popScope();
  void pushFrame() { frames_.push_back(Frame{vars_.size(), 0}); }
  void popFrame();

  // Index of the visible variable of this name, or -1. A function sees its
  // own frame and the outermost scope of the top-level unit, nothing of its
  // callers. Indices stay valid while the variable is in scope, unlike
  // references, which calls that push variables invalidate.
  int find(std::string_view name) const;
  // Index of a variable of this name declared in the innermost scope, or -1.
  int findInScope(std::string_view name) const;
  Variable& at(int index) { return vars_[static_cast<std::size_t>(index)]; }
  const Variable& at(int index) const { return vars_[static_cast<std::size_t>(index)]; }

  bool atTopLevel() const { return frames_.size() == 1 && frames_.back().scope == 0; }

  bool canHold(int64_t cells) const { return cells <= cellBudget_ - cellsInUse_; }
  void addScalar(std::string_view name, Value value, bool bound = false);
  // False when the cells would exceed the script's array budget.
  bool addArray(std::string_view name, ValueType type, std::vector<Value> elements);

 private:
  struct Frame {
    std::size_t base;  // index of the frame's first variable
    int scope;
  };

  int scopeOf() const { return frames_.back().scope; }
  void release(const Variable& v) { cellsInUse_ -= static_cast<int64_t>(v.elements.size()); }

  std::vector<Variable> vars_;
  std::vector<Frame> frames_{Frame{0, 0}};
  int64_t cellBudget_;
  int64_t cellsInUse_ = 0;
};

}  // namespace zorva::config
