#version 430 core
#include "common.glsl"

void main() { gl_Position = canvasToClip(quadCorner(gl_VertexID)); }
