#pragma once

// One user gesture (a click, a tap on a row, a drag let go) may make many
// writes and changes through the runtime: a card made from a tap on a sense
// adds a note, sets its size, its title and its body. While a scope is open
// the model's participants hold their work back and finish it once, when the
// outermost scope closes: the notebook commits one transaction and the views
// hear of the changes once. Main thread only.

#include <vector>

namespace lexicorn::host {

class GestureScope {
public:
    GestureScope();
    ~GestureScope();
    GestureScope(const GestureScope&) = delete;
    GestureScope& operator=(const GestureScope&) = delete;

    static bool isOpen();

    class Participant {
    public:
        virtual ~Participant() = default;
        // The outermost scope opened.
        virtual void gestureBegan() = 0;
        // The outermost scope closed; only participants told it began hear this.
        virtual void gestureEnded() = 0;
    };
    // A participant that joins while a gesture is open takes part from the next.
    static void join(Participant& participant);
    static void leave(Participant& participant);
};

}  // namespace lexicorn::host
