#pragma once
#include "base/source/updatehandler.h"
#include <algorithm>
#include <functional>
#include <vector>
#ifdef BENCH_SIGCPP
#include <sigc++/sigc++.h>
#endif
#ifdef BENCH_BOOST
#include <boost/signals2.hpp>
#endif
#ifdef BENCH_QT
#include "qtsubject.h"
#endif

/** Ways to tell others of a change, each as its users write it:

    Subject         something that changes.
    Listener<Then>  hears of it, counts, and does Then.
    Tie             what it takes to part the two again.
    add, remove, notify

    All is on one thread. What needs a global object has it from first use to exit. */
namespace Peers {

/** Does nothing more. */
struct Quiet {
    void operator()() const {}
};
using Action = std::function<void()>;

/** Counts what it hears. */
template <class Then, class... Bases>
struct Counting : Bases... {
    void heard(int message) {
        told += message;
        then();
    }
    int64_t told = 0;
    Then then;
};

struct Ours {
    class Subject : public Tessarine::FObject {};
    template <class Then = Quiet>
    struct Listener : Counting<Then, Tessarine::FObject> {
        void update(Tessarine::FUnknown* /*changed*/, int32_t message) override { this->heard(message); }
    };
    struct Tie {};

    template <class L>
    static Tie add(Subject& subject, L& listener) {
        static Tessarine::UpdateHandler handler;
        subject.addDependent(&listener);
        return {};
    }
    template <class L>
    static void remove(Subject& subject, L& listener, Tie&) {
        subject.removeDependent(&listener);
    }
    static void notify(Subject& subject) { subject.changed(); }
};

/** No mechanism at all: a list of pointers, and a virtual call for each. What it can't do is a removal inside. */
struct BareLoop {
    struct Subject {
        std::vector<Tessarine::IDependent*> listeners;
    };
    template <class Then = Quiet>
    using Listener = Ours::Listener<Then>;
    struct Tie {};

    template <class L>
    static Tie add(Subject& subject, L& listener) {
        subject.listeners.push_back(&listener);
        return {};
    }
    template <class L>
    static void remove(Subject& subject, L& listener, Tie&) {
        std::erase(subject.listeners, &listener);
    }
    static void notify(Subject& subject) {
        for (Tessarine::IDependent* each : subject.listeners)
            each->update(nullptr, Tessarine::kChanged);
    }
};

/** What signals as objects have in common. */
template <class Signal, class Connection>
struct Signals {
    struct Subject {
        Signal changed;
    };
    template <class Then = Quiet>
    using Listener = Counting<Then>;
    using Tie = Connection;

    template <class L>
    static void remove(Subject&, L&, Tie& tie) {
        tie.disconnect();
    }
    static void notify(Subject& subject) { subject.changed(Tessarine::kChanged); }
};

#ifdef BENCH_SIGCPP
struct SigCpp : Signals<sigc::signal<void(int)>, sigc::connection> {
    template <class L>
    static Tie add(Subject& subject, L& listener) {
        return subject.changed.connect(sigc::mem_fun(listener, &L::heard));
    }
};
#endif

#ifdef BENCH_BOOST
struct BoostSignals2 : Signals<boost::signals2::signal<void(int)>, boost::signals2::connection> {
    template <class L>
    static Tie add(Subject& subject, L& listener) {
        return subject.changed.connect([&listener](int message) { listener.heard(message); });
    }
};
#endif

#ifdef BENCH_QT
struct Qt5 {
    using Subject = QtSubject;
    template <class Then = Quiet>
    using Listener = Counting<Then, QObject>;
    using Tie = QMetaObject::Connection;

    template <class L>
    static Tie add(Subject& subject, L& listener) {
        return QObject::connect(&subject, &QtSubject::changed, &listener, &L::heard, Qt::DirectConnection);
    }
    template <class L>
    static void remove(Subject&, L&, Tie& tie) {
        QObject::disconnect(tie);
    }
    static void notify(Subject& subject) { Q_EMIT subject.changed(Tessarine::kChanged); }
};
#endif

/** Rows(Peer) for each library that is installed. */
#ifdef BENCH_SIGCPP
#define BENCH_WITH_SIGCPP(Rows) Rows(SigCpp);
#else
#define BENCH_WITH_SIGCPP(Rows)
#endif
#ifdef BENCH_BOOST
#define BENCH_WITH_BOOST(Rows) Rows(BoostSignals2);
#else
#define BENCH_WITH_BOOST(Rows)
#endif
#ifdef BENCH_QT
#define BENCH_WITH_QT(Rows) Rows(Qt5);
#else
#define BENCH_WITH_QT(Rows)
#endif
#define BENCH_WITH_LIBRARIES(Rows) BENCH_WITH_SIGCPP(Rows) BENCH_WITH_BOOST(Rows) BENCH_WITH_QT(Rows)

}  // namespace Peers
