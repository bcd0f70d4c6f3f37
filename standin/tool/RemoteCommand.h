#pragma once

namespace standin
{

/// Sends name, arguments, working folder and class path to the device, copies its answer to standard output and
/// error, and gives standard input when the device asks for it. Returns the command's exit status.
///
/// To the device: a 32-bit count, then as many texts with a 32-bit length each; later any number of input chunks with
/// a 32-bit length, of which an empty one is the end. From the device: frames of one letter, a 32-bit length and the
/// data: 'o' output, 'e' error, 'i' asks for the next chunk of input, 'x' is the end with the status as one byte.
int runRemoteCommand(int argc, char **argv);

} // namespace standin
