#include "playback/flash/zbavm1assembler.h"

namespace
{
// Action codes as the format numbers them.
enum ActionCode : quint8
{
    End = 0x00,
    Play = 0x06,
    Stop = 0x07,
    Subtract = 0x0B,
    Not = 0x12,
    Pop = 0x17,
    GetVariable = 0x1C,
    SetVariable = 0x1D,
    CallFunction = 0x3D,
    Return = 0x3E,
    NewObject = 0x40,
    InitObject = 0x43,
    Add2 = 0x47,
    Less2 = 0x48,
    Equals2 = 0x49,
    GetMember = 0x4E,
    SetMember = 0x4F,
    CallMethod = 0x52,
    ConstantPool = 0x88,
    Push = 0x96,
    Jump = 0x99,
    DefineFunction = 0x9B,
    If = 0x9D,
    GotoFrame2 = 0x9F,
};

// ActionPush value types.
enum PushType : quint8
{
    PushString = 0,
    PushNull = 2,
    PushUndefined = 3,
    PushRegister = 4,
    PushBoolean = 5,
    PushInteger = 7,
    PushConstant8 = 8,
    PushConstant16 = 9,
};

void appendLE16(QByteArray &out, quint16 value)
{
    out.append(char(value & 0xff));
    out.append(char(value >> 8));
}
} // namespace

ZBAvm1Assembler::Value::Value(QByteArray encoded, bool valid)
    : m_encoded(std::move(encoded))
    , m_valid(valid)
{
}

ZBAvm1Assembler::Value ZBAvm1Assembler::Value::string(QByteArrayView utf8)
{
    QByteArray out(1, char(PushString));
    const bool valid = appendString(out, utf8);
    return Value(out, valid);
}

ZBAvm1Assembler::Value ZBAvm1Assembler::Value::integer(qint32 value)
{
    QByteArray out(1, char(PushInteger));
    const quint32 bits = quint32(value);
    for (int shift = 0; shift < 32; shift += 8)
        out.append(char((bits >> shift) & 0xff));
    return Value(out, true);
}

ZBAvm1Assembler::Value ZBAvm1Assembler::Value::boolean(bool value)
{
    QByteArray out(1, char(PushBoolean));
    out.append(char(value ? 1 : 0));
    return Value(out, true);
}

ZBAvm1Assembler::Value ZBAvm1Assembler::Value::null()
{
    return Value(QByteArray(1, char(PushNull)), true);
}

ZBAvm1Assembler::Value ZBAvm1Assembler::Value::undefined()
{
    return Value(QByteArray(1, char(PushUndefined)), true);
}

ZBAvm1Assembler::Value ZBAvm1Assembler::Value::registerNumber(quint8 number)
{
    QByteArray out(1, char(PushRegister));
    out.append(char(number));
    return Value(out, true);
}

ZBAvm1Assembler::Value ZBAvm1Assembler::Value::constant(quint16 index)
{
    if (index < 256)
    {
        QByteArray out(1, char(PushConstant8));
        out.append(char(index));
        return Value(out, true);
    }
    QByteArray out(1, char(PushConstant16));
    appendLE16(out, index);
    return Value(out, true);
}

bool ZBAvm1Assembler::appendString(QByteArray &out, QByteArrayView utf8)
{
    out.append(utf8.data(), utf8.size());
    out.append('\0');
    return !utf8.contains('\0');
}

ZBAvm1Assembler &ZBAvm1Assembler::simple(quint8 code)
{
    m_bytes.append(char(code));
    return *this;
}

ZBAvm1Assembler &ZBAvm1Assembler::withPayload(quint8 code, QByteArrayView payload)
{
    if (payload.size() > 0xffff)
    {
        m_valid = false;
        return *this;
    }
    m_bytes.append(char(code));
    appendLE16(m_bytes, quint16(payload.size()));
    m_bytes.append(payload.data(), payload.size());
    return *this;
}

ZBAvm1Assembler &ZBAvm1Assembler::constantPool(const QList<QByteArray> &strings)
{
    if (strings.size() > 0xffff)
    {
        m_valid = false;
        return *this;
    }
    QByteArray payload;
    appendLE16(payload, quint16(strings.size()));
    for (const QByteArray &s : strings)
        m_valid = appendString(payload, s) && m_valid;
    return withPayload(ConstantPool, payload);
}

ZBAvm1Assembler &ZBAvm1Assembler::push(const QList<Value> &values)
{
    QByteArray payload;
    for (const Value &value : values)
    {
        payload.append(value.encoded());
        m_valid = value.isValid() && m_valid;
    }
    return withPayload(Push, payload);
}

ZBAvm1Assembler &ZBAvm1Assembler::pushString(QByteArrayView utf8)
{
    return push({Value::string(utf8)});
}

ZBAvm1Assembler &ZBAvm1Assembler::pushInteger(qint32 value)
{
    return push({Value::integer(value)});
}

ZBAvm1Assembler &ZBAvm1Assembler::getVariable()
{
    return simple(GetVariable);
}

ZBAvm1Assembler &ZBAvm1Assembler::setVariable()
{
    return simple(SetVariable);
}

ZBAvm1Assembler &ZBAvm1Assembler::getMember()
{
    return simple(GetMember);
}

ZBAvm1Assembler &ZBAvm1Assembler::setMember()
{
    return simple(SetMember);
}

ZBAvm1Assembler &ZBAvm1Assembler::callFunction()
{
    return simple(CallFunction);
}

ZBAvm1Assembler &ZBAvm1Assembler::callMethod()
{
    return simple(CallMethod);
}

ZBAvm1Assembler &ZBAvm1Assembler::returnValue()
{
    return simple(Return);
}

ZBAvm1Assembler &ZBAvm1Assembler::pop()
{
    return simple(Pop);
}

ZBAvm1Assembler &ZBAvm1Assembler::add2()
{
    return simple(Add2);
}

ZBAvm1Assembler &ZBAvm1Assembler::subtract()
{
    return simple(Subtract);
}

ZBAvm1Assembler &ZBAvm1Assembler::less2()
{
    return simple(Less2);
}

ZBAvm1Assembler &ZBAvm1Assembler::equals2()
{
    return simple(Equals2);
}

ZBAvm1Assembler &ZBAvm1Assembler::logicalNot()
{
    return simple(Not);
}

ZBAvm1Assembler &ZBAvm1Assembler::play()
{
    return simple(Play);
}

ZBAvm1Assembler &ZBAvm1Assembler::stop()
{
    return simple(Stop);
}

ZBAvm1Assembler &ZBAvm1Assembler::initObject()
{
    return simple(InitObject);
}

ZBAvm1Assembler &ZBAvm1Assembler::newObject()
{
    return simple(NewObject);
}

ZBAvm1Assembler &ZBAvm1Assembler::end()
{
    return simple(End);
}

ZBAvm1Assembler &ZBAvm1Assembler::ifTrue(qint16 offset)
{
    QByteArray payload;
    appendLE16(payload, quint16(offset));
    return withPayload(If, payload);
}

ZBAvm1Assembler &ZBAvm1Assembler::jump(qint16 offset)
{
    QByteArray payload;
    appendLE16(payload, quint16(offset));
    return withPayload(Jump, payload);
}

ZBAvm1Assembler &ZBAvm1Assembler::gotoFrame2(bool play)
{
    // Six reserved bits, no scene bias, then the play flag.
    return withPayload(GotoFrame2, QByteArray(1, char(play ? 0x01 : 0x00)));
}

ZBAvm1Assembler &ZBAvm1Assembler::defineFunction(QByteArrayView name, const QList<QByteArray> &parameters,
                                                 const ZBAvm1Assembler &body)
{
    if (parameters.size() > 0xffff || body.size() > 0xffff)
    {
        m_valid = false;
        return *this;
    }
    QByteArray payload;
    m_valid = appendString(payload, name) && m_valid;
    appendLE16(payload, quint16(parameters.size()));
    for (const QByteArray &parameter : parameters)
        m_valid = appendString(payload, parameter) && m_valid;
    appendLE16(payload, quint16(body.size()));
    withPayload(DefineFunction, payload);
    m_valid = body.isValid() && m_valid;
    m_bytes.append(body.bytes());
    return *this;
}

ZBAvm1Assembler &ZBAvm1Assembler::append(const ZBAvm1Assembler &other)
{
    m_bytes.append(other.bytes());
    m_valid = other.isValid() && m_valid;
    return *this;
}
