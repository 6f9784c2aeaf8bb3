#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

// Builds ActionScript 1/2 bytecode (what a DoAction tag carries) one action at
// a time. The Flash engine cannot tell the host which frame a movie shows, so
// the host slips a few lines of its own bytecode into the movie; this writes
// them without an ActionScript compiler.
//
// Every action is its code byte; codes 0x80 and above carry a UI16 length and
// that many payload bytes. Strings are passed as UTF-8 (movies of version 6 and
// later read them so) and must not contain a zero byte, which ends a string in
// the format. A payload that would not fit in the UI16 length, or a string
// with a zero byte, makes the assembler invalid rather than write bytes that
// mean something else.
class ZBAvm1Assembler
{
public:
    // One value of an ActionPush.
    class Value
    {
    public:
        static Value string(QByteArrayView utf8);
        static Value integer(qint32 value);
        static Value boolean(bool value);
        static Value null();
        static Value undefined();
        static Value registerNumber(quint8 number);
        // An index into the last ActionConstantPool: the one-byte form below
        // 256, the two-byte form from there on.
        static Value constant(quint16 index);

        // The type byte and the value as ActionPush stores them.
        QByteArray encoded() const { return m_encoded; }
        bool isValid() const { return m_valid; }

    private:
        Value(QByteArray encoded, bool valid);

        QByteArray m_encoded;
        bool m_valid = true;
    };

    ZBAvm1Assembler &constantPool(const QList<QByteArray> &strings);
    ZBAvm1Assembler &push(const QList<Value> &values);
    // Shorthands for a push of a single value.
    ZBAvm1Assembler &pushString(QByteArrayView utf8);
    ZBAvm1Assembler &pushInteger(qint32 value);

    ZBAvm1Assembler &getVariable();
    ZBAvm1Assembler &setVariable();
    ZBAvm1Assembler &getMember();
    ZBAvm1Assembler &setMember();
    ZBAvm1Assembler &callFunction();
    ZBAvm1Assembler &callMethod();
    ZBAvm1Assembler &returnValue();
    ZBAvm1Assembler &pop();
    ZBAvm1Assembler &add2();
    ZBAvm1Assembler &subtract();
    ZBAvm1Assembler &less2();
    ZBAvm1Assembler &equals2();
    ZBAvm1Assembler &logicalNot();
    ZBAvm1Assembler &play();
    ZBAvm1Assembler &stop();
    ZBAvm1Assembler &initObject();
    ZBAvm1Assembler &newObject();
    ZBAvm1Assembler &end();

    // Branches count from the end of the branch action itself.
    ZBAvm1Assembler &ifTrue(qint16 offset);
    ZBAvm1Assembler &jump(qint16 offset);
    // Goes to the frame on the stack (a number, 1-based, or a label) and plays
    // or stops there.
    ZBAvm1Assembler &gotoFrame2(bool play);

    // ActionDefineFunction: the record, then the body's bytes, which the
    // record's code size counts. An empty name leaves the function on the
    // stack, which is how an anonymous function becomes a value.
    ZBAvm1Assembler &defineFunction(QByteArrayView name, const QList<QByteArray> &parameters,
                                    const ZBAvm1Assembler &body);

    // Another assembler's actions, as they stand.
    ZBAvm1Assembler &append(const ZBAvm1Assembler &other);

    QByteArray bytes() const { return m_bytes; }
    qsizetype size() const { return m_bytes.size(); }
    bool isValid() const { return m_valid; }

private:
    ZBAvm1Assembler &simple(quint8 code);
    ZBAvm1Assembler &withPayload(quint8 code, QByteArrayView payload);
    // Appends `utf8` and its terminating zero; false when it holds a zero.
    static bool appendString(QByteArray &out, QByteArrayView utf8);

    QByteArray m_bytes;
    bool m_valid = true;
};
