#pragma once
#include <QObject>

/** A property with its notify signal, as a peer's user writes it. */
class QtValue : public QObject {
    Q_OBJECT
    Q_PROPERTY(int value READ value WRITE setValue NOTIFY valueChanged)

public:
    int value() const { return number; }
    void setValue(int newNumber) {
        if (newNumber == number)
            return;
        number = newNumber;
        Q_EMIT valueChanged();
    }

Q_SIGNALS:
    void valueChanged();

private:
    int number = 0;
};
