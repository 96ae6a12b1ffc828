"""What drives a desktop and Kelo on it: buses, accessibility trees, keys, processes."""
