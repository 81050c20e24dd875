// What a host does that it should not: it may get nothing for it, but goes on.

#include "support/Execution.h"
#include "support/UserTypeFixture.h"

#include <tbScripts/EnvironmentManager.h>
#include <tbScripts/LogManager.h>
#include <tbScripts/Namespace.h>
#include <tbScripts/ScriptManager.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace tbScripts::test
{

namespace
{

// A text whose last byte is the last that can be read.
class TextAtTheEnd
{
public:
    explicit TextAtTheEnd(const std::string& text)
        : m_pageSize(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)))
        , m_pages(::mmap(
              nullptr, 2 * m_pageSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))
    {
        if (m_pages == MAP_FAILED)
            throw std::runtime_error("no pages");
        char* const end = static_cast<char*>(m_pages) + m_pageSize;
        ::mprotect(end, m_pageSize, PROT_NONE);
        std::memcpy(end - text.size(), text.data(), text.size());
        m_view = tbMemory::StringView(end - text.size(), text.size());
    }

    TextAtTheEnd(const TextAtTheEnd&) = delete;
    TextAtTheEnd& operator=(const TextAtTheEnd&) = delete;

    ~TextAtTheEnd() { ::munmap(m_pages, 2 * m_pageSize); }

    const tbMemory::StringView& view() const { return m_view; }

private:
    std::size_t m_pageSize;
    void* m_pages;
    tbMemory::StringView m_view;
};

} // namespace

using HostMistakesTest = UserTypeFixture;

TEST_F(HostMistakesTest, OutputsMayBeTheInputs)
{
    run("function swap(a, b) return b, a end");
    std::vector<FunctionParameter> values{FunctionParameter("one"), FunctionParameter("two")};
    Parameters view(values);

    environment().callScriptFunction(environment().getScriptFunction("swap"), values, view);

    EXPECT_EQ(values[0].getString(), "two");
    EXPECT_EQ(values[1].getString(), "one");
}

TEST_F(HostMistakesTest, ThrownTextsAreNoFormats)
{
    declare(
        "fail",
        {},
        [](const Parameters&) -> FunctionParameter { throw std::string("100% %s %n %*d %"); });

    EXPECT_EQ(errorOf("fail()"), "100% %s %n %*d %");
    expectLogged("100% %s %n %*d %", "LuaFunction");
}

TEST_F(HostMistakesTest, NamesAreNoFormats)
{
    declare("%s%n%d", {PARAM_TYPE_INT}, [](const Parameters&) { return FunctionParameter(1); });
    environment().setUserType("%n%s")->setConstructor(nullptr);

    EXPECT_EQ(
        errorOf("_G['%s%n%d']({})"), "Error l.1 while calling %s%n%d. Expected int, got table.");
    m_log.takeEntries(); // the same
    run("kept = _G['%s%n%d']");
    environment().getFunc("%s%n%d")->reset();
    destroyEnvironment();
}

TEST_F(HostMistakesTest, TextsNeedNoByteBehindTheirEnd)
{
    const TextAtTheEnd name("a_name");

    environment().setName(name.view());
    environment().setVar(name.view(), name.view());
    environment().setFunc(name.view())->addParameter(PARAM_TYPE_USER_TYPE, name.view());
    environment().setNamespace(name.view())->setVar(name.view(), name.view());
    environment().setUserType(name.view());
    environment().setObject(name.view(), name.view(), &m_hostObject);

    EXPECT_EQ(environment().getObject(name.view(), name.view()), &m_hostObject);
    EXPECT_EQ(environment().getVar("missing", name.view()), "a_name");
}

TEST_F(HostMistakesTest, SourcesNeedNoByteBehindTheirEnd)
{
    const TextAtTheEnd sources("result = 'done'");
    Script script;
    script.setTargetInterpreter(INTERPRETER_LUA);
    script.setSources(sources.view());

    EXPECT_TRUE(script.load());
    EXPECT_TRUE(environment().execute(script));
}

TEST_F(HostMistakesTest, BytesNeedNoByteBehindTheirEnd)
{
    const TextAtTheEnd bytes("sabc");
    const auto* const data = reinterpret_cast<const unsigned char*>(bytes.view().data());

    const ScriptObjectReference value =
        environment().deserializeScriptObject(tbMemory::BufferView<unsigned char>(data, 4));
    environment().setVar("read", value);

    EXPECT_EQ(environment().getVar("read", ""), "abc");
}

TEST_F(HostMistakesTest, NameMayBeAPieceOfItself)
{
    environment().setName("a long name, of which a piece is the next name");

    const tbMemory::StringView name = environment().getName();
    environment().setName(tbMemory::StringView(name.data() + 2, 9));

    EXPECT_EQ(environment().getName(), "long name");
}

TEST_F(HostMistakesTest, ValueMayComeFromTheVariableThatItReplaces)
{
    environment().setVar("text", "a text that is read and written back");
    environment().setVar("number", 12345);

    environment().setVar("text", environment().getVar("text", ""));
    environment().setVar("number", environment().getVar("number", ""));
    collect();

    EXPECT_EQ(environment().getVar("text", ""), "a text that is read and written back");
    EXPECT_EQ(environment().getVar("number", ""), "12345");
}

TEST_F(HostMistakesTest, ObjectsAreNeverLookedInto)
{
    auto* const nowhere = reinterpret_cast<void*>(0xDEADBEEFDEADBEE0U);
    environment().setObject("v", "Vec", nowhere);
    run("kept = {v, [v] = tostring(v)}");

    const tbMemory::Buffer bytes =
        environment().serializeScriptObject(environment().getVar("kept"), true);
    environment().setVar("kept", environment().deserializeScriptObject(bytes));
    run("v = kept[1]");
    collect();

    EXPECT_EQ(environment().getObject("v", "Vec"), nowhere);
}

TEST_F(HostMistakesTest, OverwrittenLibrariesHinderNothing)
{
    for (const char* const name : {"_G", "string", "package", "debug", "coroutine", "rawget"})
        environment().setVar(name, 12);
    environment().setFunc("setmetatable");
    environment().setNamespace("table");

    run("local v = Vec.new()  x = (string == 12)");
    collect();

    EXPECT_TRUE(environment().getVar("x", false));
    destroyEnvironment();
    EXPECT_EQ(m_destroyed.size(), 1U);
}

TEST_F(HostMistakesTest, HostFunctionMayKillEveryManager)
{
    Environment* const managed = EnvironmentManager::getInstance()->createOrRetrieve("managed");
    managed->setEnvironmentFor(INTERPRETER_LUA);
    Script* const script = ScriptManager::getInstance()->createOrRetrieve("killer");
    script->setTargetInterpreter(INTERPRETER_LUA);
    script->setSources("kill() local t = {} for i = 1, 1000 do t[i] = {} end kill()");
    script->load();
    managed->setFunc("kill")->setFunction(
        [](const Parameters&)
        {
            EnvironmentManager::getInstance()->kill();
            ScriptManager::getInstance()->kill();
            LogManager::getInstance()->kill();
            return FunctionParameter("done");
        });

    EXPECT_TRUE(managed->execute(*script));

    ScriptManager::getInstance()->kill();
    EnvironmentManager::getInstance()->kill();
}

TEST_F(HostMistakesTest, FunctionMayBeDeclaredAgainAThousandTimesByItself)
{
    int calls = 0;
    std::function<FunctionParameter(const Parameters&)> again = [&](const Parameters&)
    {
        ++calls;
        environment().setFunc("again")->setFunction(again);
        return FunctionParameter::VOID;
    };
    environment().setFunc("again")->setFunction(again);

    run("for i = 1, 1000 do again() end");

    EXPECT_EQ(calls, 1000);
    EXPECT_EQ(m_log.takeEntries().size(), 1000U);
}

TEST_F(HostMistakesTest, NamesMayBeAMegabyteLong)
{
    const std::string name(1000000, 'n');

    environment().setVar(name, 1);
    environment().setUserType(name);
    environment().setNamespace(name + "2::" + name);
    declare(name + "3", {PARAM_TYPE_INT}, [](const Parameters&) { return FunctionParameter(1); });
    run("for k, f in pairs(_G) do if #k == 1000001 and type(f) == 'function' then pcall(f) end "
        "end");

    EXPECT_EQ(m_log.takeEntries().size(), 1U);
    EXPECT_TRUE(environment().isNamespaceSet(name + "2::" + name));
}

TEST_F(HostMistakesTest, NamesMayBeNothingButSeparators)
{
    for (const char* const name : {"::", "::::", ":", "::a", "a::", ":::::"})
    {
        EXPECT_NE(environment().setNamespace(name), nullptr) << name;
        EXPECT_TRUE(environment().isNamespaceSet(name)) << name;
        EXPECT_NE(environment().setUserType(name), nullptr) << name;
    }
    m_log.takeEntries(); // parts that come again

    destroyEnvironment();
}

TEST_F(HostMistakesTest, KindsAndOperatorsOutsideOfTheirListsAreHarmless)
{
    Function* const function = environment().setFunc("odd");
    function->addParameter(static_cast<FUNCTION_PARAMETER_TYPE>(0xFFFFFFFFU));
    function->addParameter(static_cast<FUNCTION_PARAMETER_TYPE>(1 << 30), "Vec");
    vec().setOperator(static_cast<BUILT_IN_FUNCTION>(-1));
    vec().setOperator(static_cast<BUILT_IN_FUNCTION>(1 << 30));
    UserTypeFieldDescriptor field;
    field.setter = [](const Parameters&) {};
    field.name = "odd";
    field.type = static_cast<FUNCTION_PARAMETER_TYPE>(77);
    vec().setField(field);

    run("pcall(odd, 1, 2)  pcall(function() Vec.new().odd = 1 end)");

    m_log.takeEntries(); // each of them tells
}

TEST_F(HostMistakesTest, ReferencesToTheGlobalTableLetTheEnvironmentEnd)
{
    run("globals = _G  globals.self = globals");
    const ScriptObjectReference globals = environment().getVar("globals");
    environment().setVar("again", globals);
    environment().setVar("_G", globals);

    destroyEnvironment();

    EXPECT_EQ(globals.getUseCount(), 1U);
}

} // namespace tbScripts::test
