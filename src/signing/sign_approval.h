#pragma once
// Whether the drawing holds signatures placed without their owner's approval, which a plot leaves
// out.

namespace tv::signing {

// True when a signature of the drawing is not authorised for plotting.
bool AnyUnapprovedSign();

}  // namespace tv::signing
