// The catalogue and the live view: plain data with no window behind it, so that the renderers can
// read it in a process that never opens one.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "backends/pool_words.h"
#include "frac/fractal.h"

// Guards update_count. Never held together with mutex.
extern std::recursive_mutex update_lock;

// The catalogue. Written by the GLUT thread (creation, zoom, load, parameter dialog), read by it
// alone; appended to and replaced under mutex.
extern std::vector<fractal> fractals;

// Index of the current entry, -1 before the first. GLUT thread only; bound checks under mutex.
extern std::int32_t currentFractal;

// View rectangle. Written and read by the GLUT thread only; workers get copies in their tiles.
extern double xMax, xMin, yMax, yMin;

// Constant c of the view. Written and read by the GLUT thread only; copied into tiles.
extern double cx, cy;

// Iteration limit. Written by the GLUT thread between frames, read by it and by workers, no lock.
extern std::atomic<std::int32_t> maxIters;

// Escape bound (|z|^2). Written by the GLUT thread between frames, read by it and workers, no lock.
extern std::atomic<double> maxSize;

// Formula of the view, -1 before the first entry. Written by the GLUT thread between frames, read
// by it and by workers, no lock.
extern std::atomic<std::int32_t> currentFractalType;

// Palette asked for; takes effect at the next frame. GLUT thread only, no lock.
extern std::int32_t paletteType;

// Renders still owed; never negative. Written and read by the GLUT thread under update_lock.
extern std::int32_t update_count;

// Window-title prefix. Written once at start-up, read by setCurrentFractal; GLUT thread only.
extern std::string title;

// Rectangle a glide starts from. GLUT thread only (navigation), no lock.
extern double oldXMax, oldXMin, oldYMax, oldYMin;

// Rectangle a glide ends at; between a zoom's release and the first idle call it holds the
// selection in buffer pixels. GLUT thread only (navigation), no lock.
extern double newXMax, newXMin, newYMax, newYMin;

// Copies f's values (all but name and identity) into the view globals. Any values are accepted;
// the renderers define what each does. GLUT thread; takes no lock and owes no render.
void copyToView(const fractal& f);

// Adds one owed render under update_lock; stays at the largest value instead of overflowing.
// GLUT thread.
void addUpdate();
