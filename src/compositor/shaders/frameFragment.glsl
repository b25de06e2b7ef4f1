#version 430 core

layout(binding = 0) uniform sampler2D frame;

layout(location = 0) in vec2 picture;
layout(location = 0) out vec4 color;

void main() { color = vec4(texture(frame, picture).rgb, 1.0); }
