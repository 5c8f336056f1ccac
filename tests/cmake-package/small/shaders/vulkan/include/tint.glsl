vec3 tinted(vec3 color, float amount)
{
    return mix(color, color.gbr, amount);
}
