layout(std140, binding = 0) uniform PiP {
  vec2 center;
  vec2 halfSize;
  float cornerRadius;
  float border;
  float shadow;
  float aspect;
  float mirrored;
  float camAspect;
};

// In window heights: how far the shadow reaches, and how far it falls below the window.
const float shadowReach = 0.13;
const float shadowDrop = 0.04;
