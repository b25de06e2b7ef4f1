layout(std140, binding = 0) uniform Frame {
  mat4 mvp;
  mat4 prevMVP;
  float blur;
  float cornerRadius;
  float aspect;
  float rectX;
  float rectY;
  float rectW;
  float rectH;
  float canvasWidth;
  float canvasHeight;
};
