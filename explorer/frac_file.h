// Saving and loading the catalogue. All functions: GLUT thread.
#pragma once

#include <string>

// The file name the save panel starts from and writes back into. Written by the save command and
// the two keyboard callbacks; GLUT thread only.
extern std::string filename;

// Writes every entry, in catalogue order, under mutex, and prints a line for each. A regular file
// is replaced only once the new one is complete on disk. Prints one line when it cannot be written;
// the old file is then whole, or a second line names the copy that is.
void SaveData(std::string path);

// Replaces the catalogue with the file's records, prints a line for each, makes the first one
// current and owes one render. Any bytes are accepted: a record cut short counts, with zeros for
// what is missing. A file without records leaves an empty catalogue and the view as it was and owes
// nothing; one that cannot be opened or read at all leaves everything as it was and prints a line.
void LoadData(std::string path);

// Completion callbacks of a text dialog that asks for a file name: unless another button than "OK"
// was pressed, take `text` as the new filename and save or load. `user` may be a C string to print
// first. Always true.
bool keyboard_input_save(std::string button, std::string text, void* user);
bool keyboard_input_load(std::string button, std::string text, void* user);
