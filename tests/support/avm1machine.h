#pragma once

#include <functional>
#include <memory>
#include <variant>

#include <QByteArray>
#include <QList>
#include <QMap>

namespace nvktest
{
// A small ActionScript 1/2 interpreter for tests: enough of the stack machine
// (push, variables, members, calls, functions, branches, objects) to run the
// code the frame control writes against objects a test sets up, so the test
// sees what the code does rather than what bytes it has. Anything it does not
// know, or a stack that runs dry, throws std::runtime_error.
class Avm1Machine
{
public:
    struct Object;
    using ObjectPtr = std::shared_ptr<Object>;
    struct Undefined
    {
        bool operator==(const Undefined &) const = default;
    };
    using Value = std::variant<Undefined, std::nullptr_t, bool, double, QByteArray, ObjectPtr>;
    using Native = std::function<Value(const ObjectPtr &self, const QList<Value> &arguments)>;

    struct Object
    {
        QMap<QByteArray, Value> members;
        // A function defined by bytecode: its parameters and its body's range.
        QList<QByteArray> parameters;
        QByteArray code;
        qsizetype bodyStart = -1;
        qsizetype bodyEnd = -1;
        // Or a function of the test's own.
        Native native;

        bool isFunction() const { return bodyStart >= 0 || bool(native); }
    };

    static ObjectPtr newObject();
    static ObjectPtr nativeFunction(Native function);

    QMap<QByteArray, Value> &globals() { return m_globals; }

    // Runs a DoAction body up to its End.
    void run(const QByteArray &code);
    // Calls a function object with `self` as this.
    Value call(const ObjectPtr &function, const ObjectPtr &self, const QList<Value> &arguments);

    static double toNumber(const Value &value);
    static bool toBoolean(const Value &value);
    // The member `name` of `object`, or undefined.
    static Value member(const Value &object, const QByteArray &name);

private:
    Value execute(const QByteArray &code, qsizetype start, qsizetype end, QMap<QByteArray, Value> &locals);

    QMap<QByteArray, Value> m_globals;
    int m_depth = 0;
};
} // namespace nvktest
