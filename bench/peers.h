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

struct Ours {
    class Subject : public Tessarine::FObject {};
    template <class Then = Quiet>
    class Listener : public Tessarine::FObject {
    public:
        void update(Tessarine::FUnknown* /*changed*/, int32_t message) override {
            told += message;
            then();
        }
        int64_t told = 0;
        Then then;
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

#ifdef BENCH_SIGCPP
struct SigCpp {
    struct Subject {
        sigc::signal<void(int)> changed;
    };
    template <class Then = Quiet>
    struct Listener {
        void heard(int message) {
            told += message;
            then();
        }
        int64_t told = 0;
        Then then;
    };
    using Tie = sigc::connection;

    template <class L>
    static Tie add(Subject& subject, L& listener) {
        return subject.changed.connect(sigc::mem_fun(listener, &L::heard));
    }
    template <class L>
    static void remove(Subject&, L&, Tie& tie) {
        tie.disconnect();
    }
    static void notify(Subject& subject) { subject.changed.emit(Tessarine::kChanged); }
};
#endif

#ifdef BENCH_BOOST
struct BoostSignals2 {
    struct Subject {
        boost::signals2::signal<void(int)> changed;
    };
    template <class Then = Quiet>
    struct Listener {
        void heard(int message) {
            told += message;
            then();
        }
        int64_t told = 0;
        Then then;
    };
    using Tie = boost::signals2::connection;

    template <class L>
    static Tie add(Subject& subject, L& listener) {
        return subject.changed.connect([&listener](int message) { listener.heard(message); });
    }
    template <class L>
    static void remove(Subject&, L&, Tie& tie) {
        tie.disconnect();
    }
    static void notify(Subject& subject) { subject.changed(Tessarine::kChanged); }
};
#endif

#ifdef BENCH_QT
struct Qt5 {
    using Subject = QtSubject;
    template <class Then = Quiet>
    class Listener : public QObject {
    public:
        void heard(int message) {
            told += message;
            then();
        }
        int64_t told = 0;
        Then then;
    };
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

}  // namespace Peers
