#include "faults/memory/MemoryFlow.h"

#include <tbScripts/Bind.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/ScriptFunction.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tbScripts::test
{

namespace
{

struct Base
{
    int number = 3;
};

struct Piece : Base
{
    Piece() = default;

    explicit Piece(std::string pieceLabel)
        : label(std::move(pieceLabel))
    {
    }

    std::string label = "a label that needs memory of its own";
};

enum class COLOR
{
    RED,
    GREEN
};

// Owns memory, so that a callable that nobody destroys is noticed.
struct Callable
{
    std::string operator()(const std::string& text) const { return text + *suffix; }

    std::shared_ptr<std::string> suffix =
        std::make_shared<std::string>(", and a suffix that needs memory of its own");
};

bool bindTypedFunction(FlowWorld& world)
{
    return bind(*world.environment, "a_typed_function_with_a_long_name", Callable()) &&
           runIn(*world.environment, R"(
        local text = a_typed_function_with_a_long_name('a text that needs memory of its own')
        a_typed_function_with_a_long_name(text)
    )");
}

bool bindOverloadedFunction(FlowWorld& world)
{
    const Function* const function = bind(
        *world.environment,
        "an_overloaded_function_with_a_long_name",
        overload(
            Callable(),
            [kept = std::make_shared<int>(3)](double number) { return number + *kept; },
            [kept = std::make_shared<int>(3)](double number) { return number + *kept; },
            Callable()));
    return function && runIn(*world.environment, R"(
        an_overloaded_function_with_a_long_name('a text that needs memory of its own')
        assert(an_overloaded_function_with_a_long_name(4) == 7)
    )");
}

bool bindTypedType(FlowWorld& world)
{
    Environment& environment = *world.environment;
    bindType<Base>(environment, "a_typed_base_with_a_long_name")
        .field<&Base::number>("a_field_with_a_long_name");
    auto shared = std::make_shared<Piece>();
    TypeBinding<Piece> type =
        bindType<Piece>(environment, "a_scope_with_a_long_name::A_typed_type_with_a_long_name");
    if (!type.get())
        return false;
    type.base<Base>()
        .constructor<std::string>()
        .field<&Piece::label>("a_label_with_a_long_name")
        .property(
            "a_property_with_a_long_name",
            [suffix = Callable()](const Piece& piece) { return suffix(piece.label); },
            [suffix = Callable()](Piece& piece, const std::string& text)
            { piece.label = suffix(text); })
        .index([](const Piece& piece, int) { return piece.label; })
        .names([](const Piece& piece, std::string_view) { return piece.label; })
        .method("a_method_with_a_long_name", [shared](const Piece&) { return shared; });
    return runIn(environment, R"(
        local Type = a_scope_with_a_long_name.A_typed_type_with_a_long_name
        local piece = Type.new('a text that needs memory of its own')
        piece.a_property_with_a_long_name = piece.a_label_with_a_long_name .. piece[1]
        assert(piece.a_field_with_a_long_name == 3)
        local text = piece.a_name_that_is_no_member
        for i = 1, 9 do text = piece:a_method_with_a_long_name().a_label_with_a_long_name end
    )");
}

bool passTypedValues(FlowWorld& world)
{
    Environment& environment = *world.environment;
    using Lists = std::map<std::string, std::vector<std::optional<std::string>>>;
    bindType<Piece>(environment, "Typed_piece_with_a_long_name").constructor<std::string>();
    bind(environment, "pass_lists", [](const Lists& lists) { return lists; });
    bind(environment, "pass_piece", [](std::unique_ptr<Piece> piece) { return piece; });
    bind(
        environment,
        "pass_pieces",
        [](const Piece& piece) { return std::vector<Piece>(3, piece); });
    bind(
        environment,
        "pass_call",
        [](const ScriptFunction<std::string(std::string)>& function)
        { return function("an argument that needs memory of its own"); });
    return runIn(environment, R"(
        local lists = pass_lists({a_key_with_a_long_name = {'a text that needs memory'}, b = {}})
        assert(#lists.a_key_with_a_long_name == 1)
        local piece = Typed_piece_with_a_long_name.new('a text that needs memory of its own')
        assert(#pass_pieces(pass_piece(piece)) == 3)
        assert(#pass_call(function(text) return text .. text end) == 80)
    )");
}

bool bindTypedEnumeration(FlowWorld& world)
{
    Environment& environment = *world.environment;
    const bool isBound = bindEnum<COLOR>(
        environment,
        "An_enumeration_with_a_long_name",
        {{"A_VALUE_WITH_A_LONG_NAME", COLOR::RED}, {"ANOTHER_LONG_NAME_OF_A_VALUE", COLOR::GREEN}});
    bind(environment, "pass_color", [](COLOR color) { return color; });
    return isBound && runIn(environment, R"(
        local Names = An_enumeration_with_a_long_name
        assert(pass_color(Names.A_VALUE_WITH_A_LONG_NAME) == 0)
        assert(not pcall(pass_color, 7))
    )");
}

} // namespace

INSTANTIATE_TEST_SUITE_P(
    TypedBindings,
    MemoryFlowTest,
    ::testing::Combine(
        ::testing::Values(
            MemoryFlow{"TypedFunction", &bindTypedFunction},
            MemoryFlow{"OverloadedFunction", &bindOverloadedFunction},
            MemoryFlow{"TypedType", &bindTypedType},
            MemoryFlow{"TypedValues", &passTypedValues},
            MemoryFlow{"TypedEnumeration", &bindTypedEnumeration}),
        ::testing::Values(RefusedMemory::SPAN::ONE_REQUEST, RefusedMemory::SPAN::ALL_FURTHER)),
    &nameOfFlow);

} // namespace tbScripts::test
