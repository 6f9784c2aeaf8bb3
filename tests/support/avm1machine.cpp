#include "support/avm1machine.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace nvktest
{
namespace
{
using Value = Avm1Machine::Value;
using ObjectPtr = Avm1Machine::ObjectPtr;

[[noreturn]] void fault(const std::string &what)
{
    throw std::runtime_error("AVM1: " + what);
}

class Stack
{
public:
    void push(Value value) { m_values.append(std::move(value)); }
    Value pop()
    {
        if (m_values.isEmpty())
            fault("stack underflow");
        return m_values.takeLast();
    }
    QByteArray popString()
    {
        const Value value = pop();
        if (const auto *s = std::get_if<QByteArray>(&value))
            return *s;
        fault("a string was expected");
    }
    QList<Value> popArguments()
    {
        const double count = Avm1Machine::toNumber(pop());
        if (count < 0 || count > 64)
            fault("implausible argument count");
        QList<Value> arguments;
        for (int i = 0; i < int(count); ++i)
            arguments.append(pop());
        return arguments;
    }

private:
    QList<Value> m_values;
};

quint16 le16(const QByteArray &code, qsizetype at)
{
    if (at + 2 > code.size())
        fault("truncated field");
    return quint16(quint8(code[at]) | quint8(code[at + 1]) << 8);
}

QByteArray cString(const QByteArray &code, qsizetype &at, qsizetype end)
{
    const qsizetype zero = code.indexOf('\0', at);
    if (zero < 0 || zero >= end)
        fault("unterminated string");
    const QByteArray s = code.mid(at, zero - at);
    at = zero + 1;
    return s;
}

bool looselyEqual(const Value &a, const Value &b)
{
    const bool aNumber = std::holds_alternative<double>(a) || std::holds_alternative<bool>(a);
    const bool bNumber = std::holds_alternative<double>(b) || std::holds_alternative<bool>(b);
    if (aNumber && bNumber)
        return Avm1Machine::toNumber(a) == Avm1Machine::toNumber(b);
    const bool aEmpty = std::holds_alternative<Avm1Machine::Undefined>(a) || std::holds_alternative<std::nullptr_t>(a);
    const bool bEmpty = std::holds_alternative<Avm1Machine::Undefined>(b) || std::holds_alternative<std::nullptr_t>(b);
    if (aEmpty || bEmpty)
        return aEmpty && bEmpty;
    return a == b;
}
} // namespace

ObjectPtr Avm1Machine::newObject()
{
    return std::make_shared<Object>();
}

ObjectPtr Avm1Machine::nativeFunction(Native function)
{
    ObjectPtr object = newObject();
    object->native = std::move(function);
    return object;
}

double Avm1Machine::toNumber(const Value &value)
{
    if (const auto *d = std::get_if<double>(&value))
        return *d;
    if (const auto *b = std::get_if<bool>(&value))
        return *b ? 1.0 : 0.0;
    if (const auto *s = std::get_if<QByteArray>(&value))
    {
        bool ok = false;
        const double d = s->toDouble(&ok);
        return ok ? d : std::nan("");
    }
    return std::nan("");
}

bool Avm1Machine::toBoolean(const Value &value)
{
    if (const auto *b = std::get_if<bool>(&value))
        return *b;
    if (const auto *d = std::get_if<double>(&value))
        return *d != 0 && *d == *d;
    if (const auto *s = std::get_if<QByteArray>(&value))
        return !s->isEmpty();
    return std::holds_alternative<ObjectPtr>(value);
}

Value Avm1Machine::member(const Value &object, const QByteArray &name)
{
    if (const auto *o = std::get_if<ObjectPtr>(&object))
        return (*o)->members.value(name, Undefined{});
    return Undefined{};
}

void Avm1Machine::run(const QByteArray &code)
{
    QMap<QByteArray, Value> locals;
    execute(code, 0, code.size(), locals);
}

Value Avm1Machine::call(const ObjectPtr &function, const ObjectPtr &self, const QList<Value> &arguments)
{
    if (!function || !function->isFunction())
        fault("not a function");
    if (function->native)
        return function->native(self, arguments);
    if (++m_depth > 32)
        fault("recursion too deep");
    QMap<QByteArray, Value> locals;
    for (qsizetype i = 0; i < function->parameters.size(); ++i)
        locals[function->parameters[i]] = i < arguments.size() ? arguments[i] : Value(Undefined{});
    locals["this"] = self ? Value(self) : Value(Undefined{});
    const Value result = execute(function->code, function->bodyStart, function->bodyEnd, locals);
    --m_depth;
    return result;
}

Value Avm1Machine::execute(const QByteArray &code, qsizetype start, qsizetype end, QMap<QByteArray, Value> &locals)
{
    Stack stack;
    qsizetype pc = start;
    int steps = 0;
    const auto lookup = [this, &locals](const QByteArray &name) -> Value
    {
        if (locals.contains(name))
            return locals.value(name);
        return m_globals.value(name, Undefined{});
    };
    while (pc < end)
    {
        if (++steps > 100000)
            fault("endless loop");
        const quint8 action = quint8(code[pc]);
        qsizetype payload = pc + 1;
        qsizetype next = pc + 1;
        if (action >= 0x80)
        {
            const quint16 length = le16(code, pc + 1);
            payload = pc + 3;
            next = payload + length;
            if (next > end)
                fault("action runs past its code");
        }
        switch (action)
        {
            case 0x00:
                return Undefined{};
            case 0x0B: // Subtract
            {
                const double a = toNumber(stack.pop());
                const double b = toNumber(stack.pop());
                stack.push(b - a);
                break;
            }
            case 0x47: // Add2
            {
                const Value a = stack.pop();
                const Value b = stack.pop();
                if (std::holds_alternative<QByteArray>(a) || std::holds_alternative<QByteArray>(b))
                    fault("string addition is not modelled");
                stack.push(toNumber(b) + toNumber(a));
                break;
            }
            case 0x49: // Equals2
            {
                const Value a = stack.pop();
                const Value b = stack.pop();
                stack.push(looselyEqual(b, a));
                break;
            }
            case 0x12: // Not
                stack.push(!toBoolean(stack.pop()));
                break;
            case 0x17: // Pop
                stack.pop();
                break;
            case 0x1C: // GetVariable
                stack.push(lookup(stack.popString()));
                break;
            case 0x1D: // SetVariable
            {
                const Value value = stack.pop();
                const QByteArray name = stack.popString();
                (locals.contains(name) ? locals : m_globals)[name] = value;
                break;
            }
            case 0x4E: // GetMember
            {
                const QByteArray name = stack.popString();
                const Value object = stack.pop();
                if (!std::holds_alternative<ObjectPtr>(object))
                    fault("member '" + name.toStdString() + "' of a non-object");
                stack.push(member(object, name));
                break;
            }
            case 0x4F: // SetMember
            {
                const Value value = stack.pop();
                const QByteArray name = stack.popString();
                const Value object = stack.pop();
                const auto *o = std::get_if<ObjectPtr>(&object);
                if (!o)
                    fault("setting '" + name.toStdString() + "' on a non-object");
                (*o)->members[name] = value;
                break;
            }
            case 0x3D: // CallFunction
            {
                const QByteArray name = stack.popString();
                const QList<Value> arguments = stack.popArguments();
                const Value function = lookup(name);
                const auto *f = std::get_if<ObjectPtr>(&function);
                if (!f)
                    fault("no function '" + name.toStdString() + "'");
                stack.push(call(*f, nullptr, arguments));
                break;
            }
            case 0x52: // CallMethod
            {
                const QByteArray name = stack.popString();
                const Value object = stack.pop();
                const QList<Value> arguments = stack.popArguments();
                const auto *o = std::get_if<ObjectPtr>(&object);
                if (!o)
                    fault("method '" + name.toStdString() + "' of a non-object");
                const Value function = name.isEmpty() ? object : member(object, name);
                const auto *f = std::get_if<ObjectPtr>(&function);
                if (!f)
                    fault("no method '" + name.toStdString() + "'");
                stack.push(call(*f, *o, arguments));
                break;
            }
            case 0x40: // NewObject
            {
                const QByteArray name = stack.popString();
                const QList<Value> arguments = stack.popArguments();
                const Value constructor = lookup(name);
                const auto *c = std::get_if<ObjectPtr>(&constructor);
                if (!c)
                    fault("no class '" + name.toStdString() + "'");
                stack.push(call(*c, nullptr, arguments));
                break;
            }
            case 0x43: // InitObject
            {
                const double count = toNumber(stack.pop());
                if (count < 0 || count > 64)
                    fault("implausible property count");
                ObjectPtr object = newObject();
                for (int i = 0; i < int(count); ++i)
                {
                    const Value value = stack.pop();
                    object->members[stack.popString()] = value;
                }
                stack.push(object);
                break;
            }
            case 0x3E: // Return
                return stack.pop();
            case 0x96: // Push
            {
                qsizetype at = payload;
                while (at < next)
                {
                    const quint8 type = quint8(code[at++]);
                    switch (type)
                    {
                        case 0:
                            stack.push(cString(code, at, next));
                            break;
                        case 2:
                            stack.push(nullptr);
                            break;
                        case 3:
                            stack.push(Undefined{});
                            break;
                        case 5:
                            if (at + 1 > next)
                                fault("truncated boolean");
                            stack.push(code[at++] != 0);
                            break;
                        case 7:
                        {
                            if (at + 4 > next)
                                fault("truncated integer");
                            const quint32 raw = quint32(le16(code, at)) | quint32(le16(code, at + 2)) << 16;
                            stack.push(double(qint32(raw)));
                            at += 4;
                            break;
                        }
                        default:
                            fault("push type " + std::to_string(type) + " is not modelled");
                    }
                }
                break;
            }
            case 0x99: // Jump
                next += qint16(le16(code, payload));
                break;
            case 0x9D: // If
                if (toBoolean(stack.pop()))
                    next += qint16(le16(code, payload));
                break;
            case 0x9B: // DefineFunction
            {
                qsizetype at = payload;
                const QByteArray name = cString(code, at, next);
                ObjectPtr function = newObject();
                const quint16 count = le16(code, at);
                at += 2;
                for (int i = 0; i < count; ++i)
                    function->parameters.append(cString(code, at, next));
                const quint16 size = le16(code, at);
                if (at + 2 != next || next + size > end)
                    fault("malformed DefineFunction");
                function->code = code;
                function->bodyStart = next;
                function->bodyEnd = next + size;
                next += size;
                if (name.isEmpty())
                    stack.push(function);
                else
                    m_globals[name] = function;
                break;
            }
            default:
                fault("action " + std::to_string(action) + " is not modelled");
        }
        if (next < start || next > end)
            fault("branch leaves the code");
        pc = next;
    }
    return Undefined{};
}
} // namespace nvktest
