// Filled in as the layer grows.
