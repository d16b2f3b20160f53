#pragma once
// Evaluator of a parsed configuration script.
//
// Errors are values: evaluation returns an empty optional (or Flow::Error)
// after recording the first message, and every caller passes that on
// unchanged, so a failing script yields exactly one message.

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "config/ast.h"
#include "config/environment.h"
#include "config/script.h"

namespace zorva::config {

class Interpreter {
 public:
  Interpreter(const Program& program, const Limits& limits);

  // Declares an engine variable as a global int; call before run().
  void bind(std::string_view name, int32_t value);
  // Runs the top-level unit; false on error, with the message in error().
  bool run();
  const std::string& error() const { return error_; }
  // Current value of a global int, after run().
  std::optional<int32_t> global(std::string_view name) const;

 private:
  enum class Flow { Normal, Break, Continue, Return, Error };

  // Counts one step and one level of nesting for as long as it lives.
  class Enter {
   public:
    explicit Enter(Interpreter& in);
    ~Enter() { --in_.depth_; }
    Enter(const Enter&) = delete;
    Enter& operator=(const Enter&) = delete;
    bool ok() const { return ok_; }

   private:
    Interpreter& in_;
    bool ok_;
  };

  // Messages are put together here, out of line, not by the callers: string
  // temporaries in the recursive evaluation functions would make every native
  // frame larger and so allow less recursion within the same stack.
  [[gnu::noinline, gnu::cold]] std::nullopt_t fail(std::string_view a, std::string_view b = {},
                                                   std::string_view c = {});
  [[gnu::noinline, gnu::cold]] bool failed(std::string_view a, std::string_view b = {},
                                           std::string_view c = {});
  [[gnu::noinline, gnu::cold]] std::nullopt_t failSteps();
  [[gnu::noinline, gnu::cold]] std::nullopt_t failIndex(const std::string& name, int32_t index,
                                                        std::size_t size);
  [[gnu::noinline, gnu::cold]] std::nullopt_t failOp(OpError error, int32_t op);

  Flow exec(const Stmt& s);
  Flow execAll(const std::vector<StmtPtr>& statements);
  Flow execBlock(const Stmt& s);
  Flow execWhile(const Stmt& s);
  bool declare(ValueType type, const Declarator& d);
  bool declareScalar(ValueType type, const Declarator& d);
  bool declareArray(ValueType type, const Declarator& d);
  std::optional<int32_t> arraySize(const Declarator& d);

  std::optional<Value> eval(const Expr& e);
  std::optional<Value> evalVariable(const Expr& e);
  std::optional<Value> evalElement(const Expr& e);
  std::optional<Value> evalBinary(const Expr& e);
  std::optional<Value> evalUnary(const Expr& e);
  std::optional<Value> evalAssign(const Expr& e);
  std::optional<Value> call(const Expr& e, bool valueNeeded);
  // The array variable named by an Element node and its checked index.
  std::optional<std::pair<int, int32_t>> locateElement(const Expr& e);
  std::optional<Value> convert(ValueType type, Value v);
  std::optional<Value> checked(OpResult r, int32_t op);

  const Program& program_;
  Limits limits_;
  Environment env_;
  std::unordered_map<std::string, const Function*> functions_;
  std::string error_;
  SourcePos where_;  // of the statement being run, named in error messages
  Value returned_;
  int64_t steps_ = 0;
  int depth_ = 0;
};

}  // namespace zorva::config
