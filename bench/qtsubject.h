#pragma once
#include <QObject>

/** An object with one signal, as a peer's user writes it. */
class QtSubject : public QObject {
    Q_OBJECT

Q_SIGNALS:
    void changed(int message);
};
