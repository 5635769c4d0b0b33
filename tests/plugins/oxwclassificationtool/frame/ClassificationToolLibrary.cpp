// The classification tool's components as one loadable library, as the viewer loads the
// plug-in: the test loads and unloads it to see which names the components register.
