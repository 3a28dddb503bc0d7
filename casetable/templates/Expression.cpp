#include "casetable/templates/Expression.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <type_traits>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

namespace casetable {

namespace {

// More choices than any path of a real tree needs, and so few that giving up takes a fraction of a
// second.
const std::uint32_t matchLimit = 10'000'000;
const std::uint32_t heapLimitInKibibytes = 64 * 1024;
const std::size_t firstJitStack = 32768;
const std::size_t largestJitStack = 1048576;
// Deeper than a template of the greatest depth needs.
const std::uint32_t nestLimit = 1000;

struct FreeCode {
    void operator()(pcre2_code* code) const { pcre2_code_free(code); }
};
struct FreeCompileContext {
    void operator()(pcre2_compile_context* context) const { pcre2_compile_context_free(context); }
};
struct FreeMatchContext {
    void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};
struct FreeMatchData {
    void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};
struct FreeJitStack {
    void operator()(pcre2_jit_stack* stack) const { pcre2_jit_stack_free(stack); }
};
using CodePointer = std::unique_ptr<pcre2_code, FreeCode>;

template <class Pointer> Pointer allocated(typename Pointer::pointer pointer)
{
    if (pointer == nullptr)
        throw std::bad_alloc();
    return Pointer(pointer);
}

std::string engineMessage(int error)
{
    std::array<PCRE2_UCHAR, 256> message = {};
    pcre2_get_error_message(error, message.data(), message.size());
    return reinterpret_cast<const char*>(message.data());
}

PCRE2_SPTR bytesOf(std::string_view text)
{
    return reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data());
}

CodePointer compiled(std::string_view text, std::uint32_t options)
{
    using Context = std::unique_ptr<pcre2_compile_context, FreeCompileContext>;
    const auto context = allocated<Context>(pcre2_compile_context_create(nullptr));
    pcre2_set_newline(context.get(), PCRE2_NEWLINE_LF);
    pcre2_set_parens_nest_limit(context.get(), nestLimit);
    int error = 0;
    std::size_t position = 0;
    CodePointer code(
        pcre2_compile(bytesOf(text), text.size(), options, &error, &position, context.get()));
    if (code)
        return code;
    if (error == PCRE2_ERROR_HEAP_FAILED)
        throw std::bad_alloc();
    throw ExpressionError(std::min(position, text.size()), engineMessage(error));
}

std::uint32_t number(const pcre2_code& code, std::uint32_t what)
{
    std::uint32_t answer = 0;
    pcre2_pattern_info(&code, what, &answer);
    return answer;
}

bool beginsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

// Why an item, given with all that follows it, has no place in a column; null where it has one.
// Groups that are not there are refused by the engine itself; here are the whole expression, which
// has the number 0, and what would be a group in a larger one.
const char* refusal(std::string_view item)
{
    if (beginsWith(item, "(*"))
        return "an expression in a template has no verbs";
    if (beginsWith(item, "(?P<") || beginsWith(item, "(?'") ||
        (beginsWith(item, "(?<") && !beginsWith(item, "(?<=") && !beginsWith(item, "(?<!")))
        return "an expression in a template names no groups";
    if (beginsWith(item, "\\K"))
        return "an expression in a template has no \\K";
    const bool isNumber = item.size() > 1 && item[0] == '\\' && item[1] >= '1' && item[1] <= '9';
    if (isNumber || beginsWith(item, "\\g") || beginsWith(item, "(?R") || beginsWith(item, "(?0") ||
        beginsWith(item, "(?("))
        return "an expression in a template refers to no group and has no conditions";
    return nullptr;
}

// The first refusal in an expression. The engine calls back through code that no exception passes.
struct Refusal {
    std::string_view expression;
    const char* reason;
    std::size_t position;
};

int refuseItem(pcre2_callout_enumerate_block* block, void* data)
{
    auto& found = *static_cast<Refusal*>(data);
    // What stands between \Q and \E is an item a byte.
    if (block->next_item_length < 2)
        return 0;
    found.position = block->pattern_position;
    found.reason = refusal(found.expression.substr(found.position));
    return found.reason != nullptr ? 1 : 0;
}

int refuseCallout(pcre2_callout_enumerate_block* block, void* data)
{
    auto& found = *static_cast<Refusal*>(data);
    found.position = block->pattern_position;
    found.reason = "an expression in a template has no callouts";
    return 1;
}

using Refuse = int (*)(pcre2_callout_enumerate_block*, void*);

void refuseIn(std::string_view text, std::uint32_t options, Refuse refuse)
{
    const CodePointer code = compiled(text, options);
    Refusal found = {text, nullptr, 0};
    pcre2_callout_enumerate(code.get(), refuse, &found);
    if (found.reason != nullptr)
        throw ExpressionError(found.position, found.reason);
}

} // namespace

struct Expression::Code {
    CodePointer pointer;
};

Expression::Expression(const Translation& translation)
    : groups_(translation.groups),
      code_(new Code{compiled(translation.expression, PCRE2_ANCHORED | PCRE2_DUPNAMES)})
{
    // Where there is no such thing, or too little memory for it, matching takes the longer way.
    pcre2_jit_compile(code_->pointer.get(), PCRE2_JIT_COMPLETE);
}

Expression::~Expression() = default;

struct ExpressionMatcher::Memory {
    std::unique_ptr<pcre2_match_context, FreeMatchContext> context;
    std::unique_ptr<pcre2_jit_stack, FreeJitStack> stack; // Once it is needed.
    std::unique_ptr<pcre2_match_data, FreeMatchData> data;
};

const std::size_t ExpressionMatcher::unset = PCRE2_UNSET;

ExpressionMatcher::ExpressionMatcher() : memory_(new Memory)
{
    using Context = decltype(memory_->context);
    memory_->context = allocated<Context>(pcre2_match_context_create(nullptr));
    pcre2_set_match_limit(memory_->context.get(), matchLimit);
    pcre2_set_heap_limit(memory_->context.get(), heapLimitInKibibytes);
}

ExpressionMatcher::~ExpressionMatcher() = default;

const std::size_t* ExpressionMatcher::match(const Expression& expression, std::string_view subject)
{
    const pcre2_code* const code = expression.code_->pointer.get();
    auto& data = memory_->data;
    if (!data || pcre2_get_ovector_count(data.get()) <= expression.groups().size()) {
        data.reset();
        data = allocated<std::remove_reference_t<decltype(data)>>(
            pcre2_match_data_create_from_pattern(code, nullptr));
    }
    const auto matched = [&] {
        return pcre2_match(code, bytesOf(subject), subject.size(), 0, 0, data.get(),
                           memory_->context.get());
    };
    int result = matched();
    // For nearly all paths what the engine takes of the thread's own stack is enough, and to make
    // another for each matcher would take longer than to match some hundred paths.
    if (result == PCRE2_ERROR_JIT_STACKLIMIT && !memory_->stack) {
        memory_->stack = allocated<decltype(memory_->stack)>(
            pcre2_jit_stack_create(firstJitStack, largestJitStack, nullptr));
        pcre2_jit_stack_assign(memory_->context.get(), nullptr, memory_->stack.get());
        result = matched();
    }
    if (result == PCRE2_ERROR_NOMATCH)
        return nullptr;
    if (result < 0)
        throw std::runtime_error(engineMessage(result));
    return pcre2_get_ovector_pointer(data.get());
}

std::string enclosedExpression(const std::string& text)
{
    // Options of the whole, such as (*UTF), are no items of it.
    if (const char* const reason = beginsWith(text, "(*") ? refusal(text) : nullptr)
        throw ExpressionError(0, reason);
    const CodePointer alone = compiled(text, PCRE2_NO_AUTO_CAPTURE);
    refuseIn(text, PCRE2_NO_AUTO_CAPTURE, refuseCallout);
    // The engine puts a callout in front of each item, and so tells where items are.
    refuseIn(text, PCRE2_NO_AUTO_CAPTURE | PCRE2_AUTO_CALLOUT, refuseItem);
    // (?-n) and (?^) lift the option.
    if (number(*alone, PCRE2_INFO_CAPTURECOUNT) > 0)
        throw ExpressionError(0, "the parentheses of an expression in a template capture nothing");

    // It may end within \Q, which \E ends. Elsewhere \E is nothing, but in a comment of (?x), which
    // swallows it with the parenthesis and ends with the line.
    for (const char* const end : {"\\E)", "\n)"}) {
        std::string enclosed = "(?n:" + text + end;
        try {
            compiled(enclosed, 0);
            return enclosed;
        } catch (const ExpressionError&) {
            continue;
        }
    }
    throw ExpressionError(text.size(), "the expression cannot be put into a template");
}

} // namespace casetable
