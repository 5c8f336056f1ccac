// Integer noise. PCG3D: Jarzynski and Olano, "Hash Functions for GPU Rendering", JCGT 9(3), 2020,
// after O'Neill's permuted congruential generator, 2014.
uvec3 hash3(uvec3 v)
{
    v = v * 1664525u + 1013904223u;
    v.x += v.y * v.z;
    v.y += v.z * v.x;
    v.z += v.x * v.y;
    v ^= v >> 16u;
    v.x += v.y * v.z;
    v.y += v.z * v.x;
    v.z += v.x * v.y;
    return v;
}

// Three independent uniform values, 0..1.
vec3 uniformNoise(uvec3 cell)
{
    return vec3(hash3(cell) >> 8u) * (1.0 / 16777215.0);
}

// Uniform in -1..1, so its mean is 0.
float signedNoise(uvec3 cell)
{
    return uniformNoise(cell).x * 2.0 - 1.0;
}
