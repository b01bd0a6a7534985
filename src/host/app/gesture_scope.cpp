#include "host/app/gesture_scope.h"

#include <algorithm>
#include <utility>

namespace lexicorn::host {

namespace {

struct Gestures {
    int depth = 0;
    std::vector<GestureScope::Participant*> joined;
    // Those told that the open gesture began.
    std::vector<GestureScope::Participant*> taking;
};

Gestures& gestures()
{
    static Gestures state;
    return state;
}

}  // namespace

GestureScope::GestureScope()
{
    Gestures& state = gestures();
    if (state.depth++ > 0)
        return;
    state.taking = state.joined;
    for (Participant* participant : state.taking)
        participant->gestureBegan();
}

GestureScope::~GestureScope()
{
    Gestures& state = gestures();
    if (--state.depth > 0)
        return;
    // A participant may leave, or open a scope of its own, while it ends.
    const std::vector<Participant*> taking = std::exchange(state.taking, {});
    for (Participant* participant : taking) {
        if (std::find(state.joined.begin(), state.joined.end(), participant) != state.joined.end())
            participant->gestureEnded();
    }
}

bool GestureScope::isOpen()
{
    return gestures().depth > 0;
}

void GestureScope::join(Participant& participant)
{
    gestures().joined.push_back(&participant);
}

void GestureScope::leave(Participant& participant)
{
    Gestures& state = gestures();
    std::erase(state.joined, &participant);
    std::erase(state.taking, &participant);
}

}  // namespace lexicorn::host
