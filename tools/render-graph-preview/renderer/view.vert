#version 450

// A triangle that covers the viewport.
void main()
{
    gl_Position = vec4(vec2(gl_VertexIndex & 1, gl_VertexIndex >> 1) * 4.0 - 1.0, 0.0, 1.0);
}
