// The code of docs/guide/typed-bindings.md.

#include <tbScripts/Bind.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Script.h>
#include <tbScripts/ScriptFunction.h>

#include <iostream>
#include <string>

using namespace tbScripts;

namespace
{

// [shown]
enum class COLOR
{
    RED,
    BLUE
};

struct Entity
{
    int id = 7;
};

class Unit : public Entity
{
public:
    Unit(const std::string& name, int startHealth)
        : health(startHealth)
        , m_name(name)
    {
    }

    void hurt(int damage) { health -= damage; }

    const std::string& getName() const { return m_name; }

    void setName(const std::string& name) { m_name = name; }

    int health;

private:
    std::string m_name;
};

// [/shown]

// [shown]
double quarter(double n)
{
    return n / 4;
}

// [/shown]

void run(Environment& environment, const char* sources)
{
    Script script;
    script.setName("unit.lua");
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources);
    script.load();
    if (!environment.execute(script))
        std::cout << environment.getLastExecutionResult().message << '\n';
}

} // namespace

int main()
{
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);

    // [shown]
    bind(environment, "halve", [](double n) { return n / 2; });
    bind(environment, "print", [](const std::string& text) { std::cout << text << '\n'; });
    bindEnum<COLOR>(environment, "Color", {{"RED", COLOR::RED}, {"BLUE", COLOR::BLUE}});
    // [/shown]

    // [shown]
    bindType<Entity>(environment, "Entity").field<&Entity::id>("id");
    bindType<Unit>(environment, "game::Unit")
        .base<Entity>()
        .constructor<std::string, int>()
        .method<&Unit::hurt>("hurt")
        .field<&Unit::health>("health")
        .property<&Unit::getName, &Unit::setName>("name");
    // [/shown]

    // [shown]
    run(environment,
        "unit = game.Unit.new('Ada', 10)"
        " unit:hurt(3)"
        " print(unit.name .. ' ' .. unit.health .. ' ' .. unit.id)");
    run(environment, "print(Color[1])");
    run(environment, "unit:hurt('much')");
    // [/shown]

    // [shown]
    bind(environment, "quarter", leaf<&quarter>);
    run(environment, "sum = 0 for i = 1, 1000 do sum = sum + quarter(i) end print(sum)");
    // [/shown]

    // [shown]
    run(environment, "function rate(unit, factor) return unit.health * factor end");
    const ScriptFunction<double(Unit&, int)> rate(environment, "rate");
    Unit unit("Bob", 4);
    const double rating = rate(unit, 3);
    std::cout << rating << '\n';
    // [/shown]
}
