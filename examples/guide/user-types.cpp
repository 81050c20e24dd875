// The code of docs/guide/user-types.md.

#include <tbScripts/ContentLoader.h>
#include <tbScripts/Environment.h>
#include <tbScripts/Function.h>
#include <tbScripts/Script.h>
#include <tbScripts/UserType.h>

#include <array>
#include <iostream>
#include <string>

using namespace tbScripts;
using Parameters = tbMemory::BufferView<FunctionParameter>;

namespace
{

// [shown]
struct Point
{
    double x = 0.0;
    double y = 0.0;
};

Point* pointIn(const FunctionParameter& parameter)
{
    if (void* const object = parameter.getUserTypeObject())
        return static_cast<Point*>(object);
    throw std::string("expected a Point, got nil");
}

// [/shown]

struct World
{
    static void walkTo(const Point& point)
    {
        std::cout << "to " << point.x << ' ' << point.y << std::endl;
    }
};

} // namespace

int main()
{
    World world;
    Environment environment;
    environment.setEnvironmentFor(INTERPRETER_LUA);

    // [shown]
    UserType* const point = environment.setUserType("Point");
    point->setConstructor([](const Parameters&) { return new Point; });
    point->setDestructor([](void* object) { delete static_cast<Point*>(object); });

    Function* const of = point->setStaticMethod("of");
    of->addParameter(PARAM_TYPE_DOUBLE);
    of->addParameter(PARAM_TYPE_DOUBLE);
    of->setFunction(
        [](const Parameters& arguments)
        {
            auto* const made = new Point{arguments[0].getDouble(), arguments[1].getDouble()};
            return FunctionParameter(made, "Point", true); // the script owns it
        });
    // [/shown]

    // [shown]
    UserTypeFieldDescriptor x;
    x.name = "x";
    x.type = PARAM_TYPE_DOUBLE; // of what is written
    x.getter = [](void* object) { return static_cast<Point*>(object)->x; };
    x.setter = [](const Parameters& arguments)
    { pointIn(arguments[0])->x = arguments[1].getDouble(); };
    point->setField(x);

    UserTypeArrayDescriptor elements; // point[1], point[2]
    elements.read = [](const Parameters& arguments)
    {
        const Point* const object = pointIn(arguments[0]);
        return arguments[1].getInt() == 1 ? object->x : object->y;
    };
    point->setArrayAccess(elements);
    // [/shown]

    // [shown]
    Function* const scaled = point->setMethod("scaled", false);
    scaled->addParameter(PARAM_TYPE_DOUBLE);
    scaled->setFunction(
        [](const Parameters& arguments)
        {
            const Point* const object = pointIn(arguments[0]);
            const double factor = arguments[1].getDouble();
            auto* const made = new Point{object->x * factor, object->y * factor};
            return FunctionParameter(made, "Point", true);
        });

    point->setOperator(BUILT_IN_FUNCTION::EQ)
        ->setFunction(
            [](const Parameters& operands)
            {
                const Point* const a = pointIn(operands[0]);
                const Point* const b = pointIn(operands[1]);
                return a->x == b->x && a->y == b->y;
            });
    // [/shown]

    // [shown]
    Function* const walkTo = environment.setFunc("walkTo");
    walkTo->addParameter(PARAM_TYPE_USER_TYPE, "Point");
    walkTo->setFunction(
        [&world](const Parameters& arguments)
        {
            world.walkTo(*pointIn(arguments[0]));
            return FunctionParameter::VOID;
        });
    // [/shown]

    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(ContentLoader::inputDataStr("points.lua"));
    script.load();
    environment.execute(script);

    // [shown]
    Point home{3.0, 4.0};
    environment.setObject("home", "Point", &home); // the host keeps it

    std::array<FunctionParameter, 1> results{
        FunctionParameter::ofType(PARAM_TYPE_USER_TYPE, "Point")};
    Parameters outputs = results;
    environment.callScriptFunction(
        environment.getScriptFunction("nextStop"),
        {FunctionParameter(&home, "Point", false)},
        outputs);
    if (const void* const stop = results[0].getUserTypeObject())
        home = *static_cast<const Point*>(stop); // copied: the script owns it, and may drop it
    std::cout << "home is at " << home.x << ' ' << home.y << '\n';
    // [/shown]
}
