/*
 * explain.h: why a frame goes where it goes: the pipeline's own trace, with the
 * names of a session, whose request put each entry there, and what else meets
 * the same fate (fates.h). explanation.h is what comes out.
 */
#pragma once

#include "packet/explanation.h"
#include "packet/make_frame.h"

namespace lab::session
{
struct State;
}

namespace lab::packet
{

/**
 * Sends a frame through the pipeline as a trace: nothing is learned or changed.
 *
 * @param state  the session; authors are those that its chip has tracked
 * @param frame  the frame and where it comes in
 * @return what became of it
 */
Explanation explain(session::State &state, const MadeFrame &frame);

} // namespace lab::packet
