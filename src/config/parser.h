#pragma once
// Parser of the configuration script: tokens to a Program.
//
// program    = { function | declaration | statement } end
// function   = ("int" | "float" | "void") name "(" [params] ")" (block | ";")
// params     = "void" | param { "," param }          param = ("int" | "float") name
// declaration= ("int" | "float") declarator { "," declarator } ";"
// declarator = name [ "[" [expr] "]" ] [ "=" (expr | "{" [expr {"," expr} [","]] "}") ]
// statement  = block | ";" | expr ";" | "if" "(" expr ")" statement ["else" statement]
//            | "while" "(" expr ")" statement | "break" ";" | "continue" ";"
//            | "return" [expr] ";"
// block      = "{" { declaration | statement } "}"
// expr       = C precedence, lowest first: "=" (right to left), "||", "&&", "|",
//              "^", "&", "==" "!=", "<" "<=" ">" ">=", "<<" ">>", "+" "-",
//              "*" "/" "%", then prefix "-" "+" "!" "~" and casts "(int)" "(float)",
//              then literals, names, name "[" expr "]", name "(" args ")", "(" expr ")".
//
// A prototype "int f(int a);" is accepted and ignored: every function is known
// before the program runs, wherever it is defined.

#include <string>
#include <vector>

#include "config/ast.h"
#include "config/lexer.h"

namespace zorva::config {

// Bound on the nesting of statements and of expressions (and on the height of
// each expression tree), so that parsing, evaluating and freeing never recurse
// deeper than the native stack allows.
inline constexpr int kMaxNesting = 200;

struct ParseResult {
  Program program;
  std::string error;  // empty on success
};

// `tokens` must end with kTokEnd, as scan() delivers them.
ParseResult parse(const std::vector<Token>& tokens);

}  // namespace zorva::config
